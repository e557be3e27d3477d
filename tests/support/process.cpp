#include "support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"

namespace qem_test {

Child::~Child() {
  if (pid_ > 0 && status_ < 0) {
    ::kill(pid_, SIGKILL);
    int ignored;
    ::waitpid(pid_, &ignored, 0);
  }
}

static int Decode(int raw) {
  if (WIFEXITED(raw)) return WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) return 128 + WTERMSIG(raw);
  return -1;
}

int Child::Wait(std::chrono::milliseconds limit) {
  if (status_ >= 0 || pid_ <= 0) return status_;
  auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    int raw = 0;
    pid_t done = ::waitpid(pid_, &raw, WNOHANG);
    if (done == pid_) {
      status_ = Decode(raw);
      return status_;
    }
    if (std::chrono::steady_clock::now() >= deadline) return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

void Child::Kill(int signal_number) {
  if (pid_ > 0 && status_ < 0) ::kill(pid_, signal_number);
}

static void Redirect(const std::string& path, int target, int flags) {
  int fd = ::open(path.c_str(), flags, 0644);
  if (fd < 0) ::_exit(126);
  ::dup2(fd, target);
  ::close(fd);
}

Child Spawn(const std::vector<std::string>& argv, const SpawnOptions& options) {
  std::vector<char*> args;
  for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  pid_t pid = ::fork();
  if (pid < 0) std::abort();
  if (pid == 0) {
    Redirect(options.stdin_path.empty() ? "/dev/null" : options.stdin_path, 0, O_RDONLY);
    for (int fd : {1, 2}) {
      const std::string& path = fd == 1 ? options.stdout_path : options.stderr_path;
      if (!path.empty()) Redirect(path, fd, O_WRONLY | O_CREAT | O_TRUNC);
    }
    if (options.file_size_limit > 0) {
      const rlimit limit{static_cast<rlim_t>(options.file_size_limit),
                         static_cast<rlim_t>(options.file_size_limit)};
      if (::signal(SIGXFSZ, SIG_IGN) == SIG_ERR || ::setrlimit(RLIMIT_FSIZE, &limit) != 0) {
        ::_exit(126);
      }
    }
    ::execvp(args[0], args.data());
    ::_exit(127);
  }
  return Child(pid);
}

Ran Run(const std::vector<std::string>& argv, const std::filesystem::path& folder,
        const std::string& input, long long file_size_limit) {
  WriteFile(folder / "run.in", input);
  Kept run(argv, folder, "run",
           {.stdin_path = folder / "run.in", .file_size_limit = file_size_limit});
  const int status = run.Wait();
  return {status, run.Out(), run.Err()};
}

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (condition()) return true;
    if (std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

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

void Send(const std::string& channel, const std::vector<std::string>& messages) {
  auto op = std::make_shared<many_to_one::sender>(channel, log_file::make_null())->op();
  for (const auto& message : messages) op->write(message);
}

}  // namespace qem_test
