#include "support/outside.h"

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <memory>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"

namespace qem_test {

bool LockHeld(const std::string& name) {
  return lock_file::make(name, log_file::make_null()) == nullptr;
}

bool WaitsForLock(pid_t pid, const std::filesystem::path& file) {
  struct stat st;
  if (::stat(file.c_str(), &st) != 0) return false;
  // A waiter's line: "<n>: -> FLOCK  ADVISORY  WRITE <pid> <major>:<minor>:<inode> 0 EOF".
  const std::string waiter = " " + std::to_string(pid) + " ";
  const std::string inode = ":" + std::to_string(st.st_ino) + " ";
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    if (line.find("-> FLOCK") != std::string::npos && line.find(waiter) != std::string::npos &&
        line.find(inode) != std::string::npos) {
      return true;
    }
  }
  return false;
}

std::optional<long> Wakeups(pid_t pid) {
  const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
  std::error_code missing;
  std::optional<long> sum;
  for (const auto& entry : std::filesystem::directory_iterator(tasks, missing)) {
    std::ifstream in(entry.path() / "status");
    for (std::string line; std::getline(in, line);) {
      if (line.rfind("voluntary_ctxt_switches:", 0) == 0) {
        sum = sum.value_or(0) + std::stol(line.substr(line.find(':') + 1));
      }
    }
  }
  return sum;
}

std::vector<std::string> Listing(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

void Send(const std::string& channel, const std::vector<std::string>& messages) {
  auto op = std::make_shared<many_to_one::sender>(channel, log_file::make_null())->op();
  for (const auto& message : messages) op->write(message);
}

}  // namespace qem_test
