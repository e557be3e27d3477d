#pragma once
// Shared by the process-level tests: the real executable started in the test's private folders,
// its stderr kept in a file, and what a process can see from outside: locks and folders.

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"
#include "support/process.h"
#include "support/scoped_env.h"
#include "support/temp_env.h"

namespace qem_test {

class HelperTest : public TempEnvTest {
 protected:
  Child StartHelper(std::vector<std::string> args, const std::string& stderr_name = "stderr.txt") {
    args.insert(args.begin(), QEM_UTIL_PATH);
    return Spawn(args, {.stdout_path = (root() / "stdout.txt").string(),
                        .stderr_path = (root() / stderr_name).string()});
  }
  std::string Stderr(const std::string& name = "stderr.txt") { return ReadFile(root() / name); }
  std::string Stdout() { return ReadFile(root() / "stdout.txt"); }
  // Names of what lies in a folder.
  static std::vector<std::string> Listing(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }
  static bool Occupied(const std::string& name) {
    return lock_file::make(name, log_file::make_null()) == nullptr;
  }
  // Sends each message on the command channel "cmd", one op per message.
  static void Send(const std::vector<std::string>& messages) {
    auto sock = std::make_shared<many_to_one::sender>("cmd", log_file::make_null());
    for (const auto& message : messages) sock->op()->write(message);
  }
  static std::vector<std::string> ServerArgs() {
    return {"--stay-alive-key=alive", "--channel=cmd", "--reply-channel=rep",
            "--launch-key=launched"};
  }
};

}  // namespace qem_test
