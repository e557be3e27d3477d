#pragma once
// Shared by the client's process-level tests: a stand-in helper that serves without windows and
// keeps what it receives, and the means to look at locks from outside.

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "channel/lock_file.h"
#include "client/session.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace qem_test {

// The calling thread's id among its process's tasks; 0 where the system has none.
inline pid_t ThisTask() {
#if defined(__linux__)
  return ::gettid();
#else
  return 0;
#endif
}

// next_event with no limit, on a thread of its own. A watchdog ends it after a generous bound
// (through a descriptor it also sleeps on), and it then gives nothing: a wait that nothing but a
// limit would end fails instead of passing late or hanging.
class WatchedWait {
 public:
  explicit WatchedWait(qem_client::session& s) {
    if (::pipe(watchdog_) != 0) ADD_FAILURE() << "no pipe for the watchdog";
    thread_ = std::thread([&s, this] {
      task_ = ThisTask();
      event_ = s.next_event(std::nullopt, std::span<const int>(watchdog_, 1));
      returned_ = true;
    });
    while (task_ < 0) std::this_thread::yield();
  }
  ~WatchedWait() {
    Result();
    ::close(watchdog_[0]);
    ::close(watchdog_[1]);
  }
  pid_t task() const { return task_; }
  // What the wait gave, once it has returned (the watchdog ends it after 60 s).
  std::optional<qem_client::event> Result() {
    if (!thread_.joinable()) return event_;
    if (!WaitUntil([this] { return returned_.load(); }, std::chrono::seconds(60))) {
      [[maybe_unused]] auto ignored = ::write(watchdog_[1], "!", 1);
    }
    thread_.join();
    return event_;
  }

 private:
  int watchdog_[2] = {-1, -1};
  std::atomic<pid_t> task_ = -1;
  std::atomic<bool> returned_ = false;
  std::optional<qem_client::event> event_;
  std::thread thread_;
};

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
  // How often the threads of a process (or the one thread `task`) have gone to sleep and were
  // woken since they began: their voluntary context switches. nullopt without /proc.
  static std::optional<long> Wakeups(pid_t pid, pid_t task = 0) {
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    std::error_code missing;
    std::optional<long> sum;
    for (const auto& entry : std::filesystem::directory_iterator(tasks, missing)) {
      if (task && entry.path().filename() != std::to_string(task)) continue;
      std::ifstream in(entry.path() / "status");
      for (std::string line; std::getline(in, line);) {
        if (line.rfind("voluntary_ctxt_switches:", 0) == 0) {
          sum = sum.value_or(0) + std::stol(line.substr(line.find(':') + 1));
        }
      }
    }
    return sum;
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
