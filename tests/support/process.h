#pragma once
// Real child processes for cross-process tests, started with the test's environment, and what a
// test sees of other processes from outside, as the starting application would.

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/private_folders.h"

namespace qem_test {

struct SpawnOptions {
  std::string stdin_path{};   // empty: /dev/null
  std::string stdout_path{};  // empty: inherit
  std::string stderr_path{};  // empty: inherit
  // When set, no file may grow past this many bytes (RLIMIT_FSIZE, SIGXFSZ ignored): a write
  // across it comes back short, and the next fails with EFBIG, as on a full disk.
  long long file_size_limit = 0;
};

class Child {
 public:
  Child() = default;
  explicit Child(pid_t pid) : pid_(pid) {}
  Child(Child&& other) noexcept : pid_(other.pid_), status_(other.status_) { other.pid_ = -1; }
  // A child still running when its handle goes is killed and reaped.
  ~Child();

  pid_t pid() const { return pid_; }
  // Waits up to `limit` for the child to end. Gives its exit status, 128 + the signal number if
  // a signal ended it, or -1 if it is still running when the limit is reached.
  int Wait(std::chrono::milliseconds limit = std::chrono::seconds(60));
  bool Running() { return Wait(std::chrono::milliseconds(0)) < 0; }
  void Kill(int signal_number);

 private:
  pid_t pid_ = -1;
  int status_ = -1;
};

// Starts argv[0] (a path, or a program on PATH) with the arguments. Aborts if fork fails.
Child Spawn(const std::vector<std::string>& argv, const SpawnOptions& options = {});

// A child whose stdout and stderr are kept in `folder`, in <name>.out and <name>.err (made
// afresh); the options' own stdout and stderr are not used.
class Kept : public Child {
 public:
  Kept(const std::vector<std::string>& argv, const std::filesystem::path& folder,
       const std::string& name, SpawnOptions options = {})
      : Child(Spawn(argv, Into((folder / name).string(), options))), files_(folder / name) {}
  std::string Out() const { return ReadFile(files_ + ".out"); }
  std::string Err() const { return ReadFile(files_ + ".err"); }

 private:
  static SpawnOptions Into(const std::string& files, SpawnOptions options) {
    options.stdout_path = files + ".out";
    options.stderr_path = files + ".err";
    return options;
  }
  std::string files_;
};

// What a program that ran gave: its status as Child::Wait gives it, its stdout and its stderr.
struct Ran {
  int status;
  std::string out, err;
};

// Runs argv with `input` on its stdin and waits up to a minute for its end (a child still
// running then is killed: status -1). Its files lie in `folder`, named "run.*".
Ran Run(const std::vector<std::string>& argv, const std::filesystem::path& folder,
        const std::string& input = "", long long file_size_limit = 0);

// True when somebody holds the lock `name` of the temporary folder: our own attempt fails.
bool LockHeld(const std::string& name);

// True while process `pid` waits to take the flock of `file`, as the kernel lists it in
// /proc/locks; always false where there is no such list.
bool WaitsForLock(pid_t pid, const std::filesystem::path& file);

// How often the threads of a process have gone to sleep and were woken since they began: their
// voluntary context switches. nullopt without /proc.
std::optional<long> Wakeups(pid_t pid);

// Writes the messages to `channel` in one stay inside it, in their order.
void Send(const std::string& channel, const std::vector<std::string>& messages);

// Polls the condition every 5 ms until it holds or the limit passes; true if it held.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);

}  // namespace qem_test
