#pragma once
// Shared by the client's process-level tests: a stand-in helper that serves without windows and
// keeps what it receives, and the means to look at locks from outside.

#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

class ClientTest : public TempEnvTest {
 protected:
  // A script in the test's folder with the given body, executable.
  std::string Script(const std::string& name, const std::string& body) {
    const auto path = root() / name;
    WriteFile(path, "#!/bin/bash\n" + body);
    ::chmod(path.c_str(), 0755);
    return path.string();
  }
  // Stands in for the helper without windows (client_stand_in): what it receives ends up in
  // Received().
  static std::string StandIn() { return QEM_STAND_IN; }
  std::string Received() { return ReadFile(tmp() / "received"); }
  static bool Held(const std::string& name) {
    return lock_file::make(name, log_file::make_null()) == nullptr;
  }
  // Names of what lies in a folder.
  static std::vector<std::string> Listing(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }
};

}  // namespace qem_test
