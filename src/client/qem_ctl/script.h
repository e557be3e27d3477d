#pragma once
// The language of qem_ctl: one line, one step. A line is a command in short form ("create p1
// style=3 title=Copying"), a command in JSON, a pause, a wait for a reply, or nothing (blank, or
// a comment). One table holds every form and every key: parse_line reads with it and usage()
// shows it, so the two can't tell different stories.

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qem_ctl {

struct step {
  enum class kind { nothing, send, sleep, wait };
  kind what = kind::nothing;
  std::string json{};  // send: the command's JSON text
  // sleep: how long; wait: how long at most, nullopt for as long as it takes.
  std::optional<std::chrono::duration<double>> limit{};
  std::optional<std::string> obj_id{};  // wait: whose reply; nullopt for any window's
};

// Thrown for a line that is no step; what() says why, in one line.
class bad_line : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The step that `line` says. Throws bad_line; an obj_id or button id that a reply can't carry
// is refused here, as the client library refuses it.
step parse_line(std::string_view line);

// The "Steps:" and "Keys:" parts of qem_ctl's usage, from the same table.
std::string usage();

// The number that the whole of `text` is (decimal, with an optional sign, fraction and exponent),
// when it is finite; nullopt otherwise. qem_ctl reads every number with it.
std::optional<double> read_number(std::string_view text);

// `synopsis` at the left and `meaning` beside it from column 32, continuation lines of the
// meaning (after a line break in it) under the first: one entry of a usage.
std::string usage_entry(std::string_view synopsis, std::string_view meaning);

}  // namespace qem_ctl
