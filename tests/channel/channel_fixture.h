#pragma once
// Shared by the channel tests: where a channel's files lie in the test's preferences folder.

#include <filesystem>
#include <string>

#include "support/temp_env.h"

namespace qem_test {

class ChannelTest : public TempEnvTest {
 protected:
  std::filesystem::path EntryLock(const std::string& id) const {
    return prefs() / ("qem.many_to_one." + id);
  }
  std::filesystem::path ReceiverLock(const std::string& id) const {
    return prefs() / ("qem.many_to_one.r." + id);
  }
  std::filesystem::path Folder(const std::string& id) const {
    return prefs() / ("qem.many_to_one." + id + ".dir");
  }
  std::filesystem::path Data(const std::string& id) const { return Folder(id) / "data"; }
};

}  // namespace qem_test
