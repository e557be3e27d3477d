#pragma once
// The program's one reader of command-line options.

#include <optional>
#include <string>
#include <string_view>

namespace misc {

// The value of the option `--<key>=value` on the command line, or "" when it is absent.
// The line is split at every single blank; a piece matches when its text before the first "="
// equals "--" + key, ignoring ASCII case; the value is the text between the first and second
// "=". The last matching piece wins. Found values are cached for the life of the process.
// Never fails.
std::string cmd_line(std::string_view key);

// The scan behind cmd_line, over a given command line, without the cache: the value of the
// last matching piece, "" for a piece with no "=", and nullopt when no piece matches.
std::optional<std::string> option_value(std::string_view command_line, std::string_view key);

}  // namespace misc
