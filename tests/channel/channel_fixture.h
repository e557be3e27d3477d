#pragma once
// Shared by the channel tests: where a channel's files lie in the test's preferences folder.

#include <filesystem>
#include <string>

#include "support/temp_env.h"

namespace qem_test {

class ChannelTest : public TempEnvTest {
 protected:
  auto EntryLock(const std::string& id) const { return prefs() / ("qem.many_to_one." + id); }
  auto ReceiverLock(const std::string& id) const { return prefs() / ("qem.many_to_one.r." + id); }
  auto Folder(const std::string& id) const { return prefs() / ("qem.many_to_one." + id + ".dir"); }
  auto Data(const std::string& id) const { return Folder(id) / "data"; }
};

}  // namespace qem_test
