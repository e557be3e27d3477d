#pragma once
// What the starting application hears from its helper: the reply to a button press, or the
// news that the helper has ended.

#include <optional>
#include <string>

namespace qem_client {

struct event {
  enum class kind {
    reply,         // a message on the reply channel; a press has cmd "pressed"
    helper_ended,  // the helper is gone; every reply it sent was delivered before this
  };
  kind what = kind::reply;
  std::string obj_id;   // of a reply: the window
  std::string cmd;      // of a reply: "pressed" for a press
  std::string btn_id;   // of a reply: the id of the pressed button
  std::string text;     // of a reply: the message as it came
  int exit_status = 0;  // of helper_ended: its exit status, 128 + a signal, -1 if unknown

  bool pressed() const { return what == kind::reply && cmd == "pressed"; }

  // A reply read from `text`: obj_id, cmd and btn_id taken as text ("" when absent). nullopt
  // for an empty text. Never throws: text that is no JSON object gives a reply with empty fields
  // and the text.
  static std::optional<event> from_reply(const std::string& text);
  static event ended(int exit_status);
};

// The event as one line of JSON: a reply as {"obj_id":..,"cmd":..,"btn_id":..} with its strings
// escaped; the end as {"cmd":"helper_ended","status":N}.
std::string to_json(const event& e);

}  // namespace qem_client
