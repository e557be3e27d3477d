#pragma once
// Shared by the channel tests: where a channel's files lie in the test's preferences folder.

#include <filesystem>
#include <string>
#include <vector>

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

// The message field of each line of a log file: what follows the fourth "|".
inline std::vector<std::string> LoggedMessages(const std::filesystem::path& log) {
  std::vector<std::string> messages;
  std::string text = ReadFile(log);
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    std::size_t field = start;
    for (int bars = 0; bars < 4 && field != std::string::npos; ++bars) {
      field = text.find('|', field);
      if (field != std::string::npos) ++field;
    }
    messages.push_back(field == std::string::npos || field > end ? "<malformed line>"
                                                                 : text.substr(field, end - field));
  }
  return messages;
}

}  // namespace qem_test
