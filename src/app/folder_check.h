#pragma once
// The check of the helper's folders at start-up, before any file is touched: the temporary
// folder holds the stay-alive and launch locks, the preferences folder the channels. Without
// them every tick would fail anew; the helper refuses to start instead.

#include <optional>
#include <string>

namespace folder_check {

// The one line (without its line break) that tells which folder can't be used and why, or
// nullopt when both can. The temporary folder must exist and be a folder the user can write
// in. The preferences folder must be such a folder too, or be missing under a parent of that
// kind, so that it can be made when it is first needed. Looks only: creates nothing and never
// throws for a folder that can't be used.
std::optional<std::string> refusal();

}  // namespace folder_check
