#pragma once
// The language of qem_ctl: one line, one step. A line is a command in short form, a command in
// JSON, a pause, a wait for a reply, or nothing (blank, or a comment after "#"):
//
//   create ID [KEY=VALUE ...]    a new window          set ID [KEY=VALUE ...]   change its top
//   state push ID [KEY=VALUE ...]      a state on top        delete ID                close the
//   window
//   {"obj_id":...}               a command in JSON, sent as it is
//   sleep SECONDS                pause (replies are still printed as they come)
//   wait [ID] [timeout=SECONDS]  until a reply of ID (of any window without ID) that no earlier
//                                wait took has come; without timeout, for as long as it takes
//
// Keys: title=TEXT, message=TEXT, style=N or style=message+bar+hidden, progress=X (0 to 1, or
// "busy" for a busy bar), buttons=ID:TEXT,ID:TEXT (empty: no buttons), button=ID:TEXT (one more
// button; repeatable). A value or ID with blanks is put in double quotes, inside which \" \\ \n
// and \t stand for a quotation mark, a backslash, a line break and a tab.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qem_ctl {

struct step {
  enum class kind { nothing, send, sleep, wait };
  kind what = kind::nothing;
  std::string json;                   // send: the command's JSON text
  double seconds = -1;                // sleep: how long; wait: the limit, -1 for none
  std::optional<std::string> obj_id;  // wait: whose reply; nullopt for any window's
};

// Thrown for a line that is no step; what() says why, in one line.
class bad_line : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The step that `line` says. Throws bad_line; an obj_id or button id that a reply can't carry
// is refused here, as the client library refuses it.
step parse_line(std::string_view line);

}  // namespace qem_ctl
