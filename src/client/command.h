#pragma once
// The commands a starting application sends to the helper, built as JSON text with every string
// escaped, and the check that refuses what the helper or its reply could not carry. A reply is
// put together without escaping, so an obj_id or a button id with a quotation mark, a backslash
// or a control character would come back as broken JSON: such ids are refused before anything
// is sent.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/error.h"

namespace qem_client {

// The flags of a window's "style", summed.
namespace style {
constexpr int message = 1;  // the message shows in the window, else in the title bar
constexpr int bar = 2;      // a progress bar, with the buttons at its right; else buttons centred
constexpr int hidden = 4;   // the window is not shown
}  // namespace style

// One button: its id comes back in the reply of a press, its text is the caption.
struct button {
  std::string id;
  std::string text;
  bool operator==(const button&) const = default;
};

// The keys of a window's state. A key left empty is not sent, and the window keeps what it had.
struct window_keys {
  std::optional<std::string> title{};
  std::optional<long long> style{};
  std::optional<std::string> message{};
  // 0.0 to 1.0 fills the bar; any negative number makes it busy (indeterminate).
  std::optional<double> progress{};
  // Up to four are shown; the first stands rightmost. An empty list removes every button.
  std::optional<std::vector<button>> buttons{};
};

// A command for one window. Build one with the functions below.
struct command {
  enum class verb { create, set, push, remove };
  verb what = verb::set;
  std::string obj_id;
  window_keys keys;

  // A new window under `obj_id` with these keys. Send "style" with every create and push.
  static command create(std::string obj_id, window_keys keys);
  // Changes the state on top of the window's stack.
  static command set(std::string obj_id, window_keys keys);
  // Puts a new, empty state on top (a question over a running display) and applies the keys;
  // a press of one of its buttons drops it again.
  static command push(std::string obj_id, window_keys keys);
  // Closes the window ("delete").
  static command remove(std::string obj_id);
};

// Why `id` can't serve as an obj_id or a button id (it holds a quotation mark, a backslash or a
// control character), or nullopt when it can. `what` names it in the text ("obj_id").
std::optional<std::string> id_refusal(std::string_view id, std::string_view what);

// Why `c` can't be sent, or nullopt: an empty obj_id, an id refused as above, a progress that is
// no finite number. Pure; never throws.
std::optional<std::string> refusal(const command& c);

// The command as one line of JSON, keys in the order obj_id, cmd, type (for create), title,
// style, message, progress, btn_spec. Throws command_refused when refusal() has a reason.
std::string to_json(const command& c);

// Why a JSON text written by hand can't be sent, or nullopt: it is no JSON object, it has no
// obj_id, or its obj_id or a button id in "btn_spec" is refused as above. Throws nothing;
// JSON nested too deeply is a reason too.
std::optional<std::string> json_refusal(const std::string& text);

}  // namespace qem_client
