#pragma once
// Where a session finds the helper when it is given no path, so that a program that links the
// client library needs no path of its own, wherever the helper was installed.

#include <string>

namespace qem_client {

// The environment variable that names the helper executable.
inline constexpr const char* kHelperVariable = "QEM_UTIL_HELPER";

// The places looked at.
struct helper_places {
  std::string beside;     // the folder of the running program, or "" when it can't be found
  std::string named;      // the value of QEM_UTIL_HELPER, "" when it is unset
  std::string installed;  // the bin/ folder of the installation the library was built for

  // Those of this process: its executable's folder, its environment, and the bin/ folder fixed
  // when the library was built.
  static helper_places of_this_process();
};

// The helper to start, the first that applies of:
//  1. "qem_util" beside the running program, when that file exists: a program that ships the
//     helper beside itself (as qem_ctl does in bin/) always starts its own;
//  2. the file that QEM_UTIL_HELPER names, when the variable is not empty, whether it exists or
//     not: a wrong setting is told by the launch, never passed over;
//  3. "qem_util" in the installation's bin/ folder, when that file exists.
// "" when none does. Touches nothing; looks only whether files exist.
std::string find_helper(const helper_places& places);

// One line that says where the helper was looked for, for the message of a launch that found
// none.
std::string not_found(const helper_places& places);

}  // namespace qem_client
