#pragma once
// Checks on the names of lock files and channels, wherever they come from (the command line, the
// console's fields, a program of the user's). A name must stay inside its folder: every file name
// made from it must be one path component. lock_file and the channel's ends apply these checks
// where a name becomes a path; callers may check earlier to say which option was wrong.

#include <optional>
#include <string>
#include <string_view>

namespace names {

// The longest file name a channel id becomes: its receiver lock "qem.many_to_one.r.<id>"
// and its folder "qem.many_to_one.<id>.dir" are the longest.
constexpr std::size_t kChannelNameOverhead = 20;
constexpr std::size_t kMaxFileName = 255;

// Why `name`, used as a file name with `overhead` bytes added, would leave its folder, or
// nullopt when it is fine. Refused: a "/" or NUL inside, "." or "..", a file name longer than
// 255 bytes. The empty name is not refused here; whether it is allowed is the caller's rule.
std::optional<std::string> refusal(std::string_view name, std::size_t overhead);

inline std::optional<std::string> lock_name_refusal(std::string_view name) {
  return refusal(name, 0);
}
inline std::optional<std::string> channel_id_refusal(std::string_view id) {
  return refusal(id, kChannelNameOverhead);
}

// `name` in double quotes for a message, with each control character shown as "?", so that the
// message stays one whole line.
std::string quoted(std::string_view name);

}  // namespace names
