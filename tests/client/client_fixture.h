#pragma once
// Shared by the client's process-level tests: a stand-in helper that serves without windows and
// keeps what it receives, and the means to look at locks and sleeping threads from outside.

#include <sys/types.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "channel/lock_file.h"
#include "support/temp_env.h"

namespace qem_test {

class ClientTest : public TempEnvTest {
 protected:
  // Stands in for the helper without windows (client_stand_in): what it receives ends up in
  // Received().
  static std::string StandIn() { return QEM_STAND_IN; }
  std::string Received() { return ReadFile(tmp() / "received"); }
  static bool Held(const std::string& name) {
    return lock_file::make(name, log_file::make_null()) == nullptr;
  }
  // How often the threads of a process have gone to sleep and were woken since they began:
  // their voluntary context switches. nullopt without /proc.
  static std::optional<long> Wakeups(pid_t pid) {
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
};

}  // namespace qem_test
