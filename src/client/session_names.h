#pragma once
// The four names that tie a starting application to its helper: two lock files in the temporary
// folder and two channels in the preferences folder. They go to the helper on its command line,
// where a value ends at a blank or a second "=", and each must stay inside its folder.

#include <optional>
#include <string>
#include <string_view>

namespace qem_client {

struct session_names {
  std::string stay_alive_key;  // lock held by the starting application while it wants the helper
  std::string launch_key;      // lock the helper takes once it serves
  std::string channel;         // commands, helper receives
  std::string reply_channel;   // replies to presses, the starting application receives

  // Names no other process picks: "qemc.<pid>.<microseconds>.<random>" with ".alive", ".up",
  // ".cmd" and ".reply" after it. Never blocks.
  static session_names unique();
  // The same four suffixes after `base`, as given; check them with refusal().
  static session_names from_base(std::string_view base);
};

// Why the names can't be used, naming the first bad one, or nullopt: an empty name; a blank or
// an "=" (the helper's command line would cut it); a name that would leave its folder, refused
// exactly as the helper refuses it; two equal lock names or channel ids.
std::optional<std::string> refusal(const session_names& names);

}  // namespace qem_client
