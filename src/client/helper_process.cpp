#include "client/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <system_error>

#if defined(__linux__)
#include <sys/syscall.h>
#elif defined(__APPLE__)
#include <sys/event.h>
#endif

extern char** environ;

namespace qem_client {

namespace {

constexpr std::size_t kKeptLines = 50;

void CloseIf(int& fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

int Decode(int raw) {
  if (WIFEXITED(raw)) return WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) return 128 + WTERMSIG(raw);
  return -1;
}

// A pipe whose two ends a started program does not inherit.
int MakePipe(int fds[2]) {
#ifdef __APPLE__
  if (::pipe(fds) != 0) return -1;
  ::fcntl(fds[0], F_SETFD, FD_CLOEXEC);
  ::fcntl(fds[1], F_SETFD, FD_CLOEXEC);
  return 0;
#else
  return ::pipe2(fds, O_CLOEXEC);
#endif
}

// A descriptor that polls readable once our child `pid` has ended, even if it already has; -1
// where the system gives none.
int EndDescriptor(pid_t pid) {
#if defined(__linux__) && defined(SYS_pidfd_open)
  return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));  // close-on-exec by itself
#elif defined(__APPLE__)
  const int queue = ::kqueue();
  if (queue < 0) return -1;
  ::fcntl(queue, F_SETFD, FD_CLOEXEC);
  struct kevent change;
  EV_SET(&change, pid, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
  const bool watched = ::kevent(queue, &change, 1, nullptr, 0, nullptr) == 0;
  const int watch_error = watched ? 0 : errno;
  // The exit is told only from the moment the watch is armed: a child that ended before (or
  // can't be watched because it did) makes the queue ready at once instead.
  siginfo_t info{};
  const bool ended =
      ::waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
      info.si_pid == pid;
  if (watched && !ended) return queue;
  EV_SET(&change, 1, EVFILT_USER, EV_ADD, NOTE_TRIGGER, 0, nullptr);
  if ((watched || watch_error == ESRCH) && ::kevent(queue, &change, 1, nullptr, 0, nullptr) == 0) {
    return queue;
  }
  ::close(queue);
  return -1;
#else
  (void)pid;
  return -1;
#endif
}

bool Blank(const std::string& line) {
  return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

helper_process::helper_process(const std::vector<std::string>& argv, bool relay) : relay_(relay) {
  int out[2], stop[2];
  if (MakePipe(out) != 0) throw std::system_error(errno, std::generic_category());
  if (MakePipe(stop) != 0) {
    int error = errno;
    ::close(out[0]);
    ::close(out[1]);
    throw std::system_error(error, std::generic_category());
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_adddup2(&actions, out[1], 2);
  // The helper runs in a process group of its own with default signal handling: a Ctrl-C at
  // our terminal is ours to handle, and the helper ends when we let go of the stay-alive lock.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults, none;
  sigemptyset(&defaults);
  for (int s : {SIGINT, SIGTERM, SIGPIPE, SIGHUP, SIGQUIT, SIGCHLD}) sigaddset(&defaults, s);
  sigemptyset(&none);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  std::vector<char*> args;
  for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  int error = ::posix_spawn(&pid_, args[0], &actions, &attributes, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  ::close(out[1]);
  if (error != 0) {
    ::close(out[0]);
    ::close(stop[0]);
    ::close(stop[1]);
    pid_ = -1;
    throw std::system_error(error, std::generic_category());
  }
  end_fd_ = EndDescriptor(pid_);
  stop_read_ = stop[0];
  stop_write_ = stop[1];
  try {
    reader_ = std::thread([this, fd = out[0]] { relay_loop(fd, stop_read_); });
  } catch (const std::system_error&) {
    ::close(out[0]);
    ::kill(pid_, SIGKILL);
    end(std::chrono::milliseconds(0));
    CloseIf(stop_read_);
    CloseIf(stop_write_);
    CloseIf(end_fd_);
    throw;
  }
}

helper_process::~helper_process() {
  if (pid_ > 0) end(std::chrono::seconds(5));
  CloseIf(end_fd_);
  if (stop_write_ >= 0) {
    char byte = 0;
    [[maybe_unused]] auto ignored = ::write(stop_write_, &byte, 1);
  }
  if (reader_.joinable()) reader_.join();
  CloseIf(stop_write_);
  CloseIf(stop_read_);
}

void helper_process::relay_loop(int fd, int stop_fd) {
  std::string pending;
  auto take = [&](std::string line) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    if (relay_) {
      line.push_back('\n');
      [[maybe_unused]] auto ignored = ::write(2, line.data(), line.size());
      line.pop_back();
    }
    if (Blank(line)) return;
    std::lock_guard<std::mutex> hold(said_lock_);
    said_.push_back(std::move(line));
    if (said_.size() > kKeptLines) said_.pop_front();
  };
  for (;;) {
    pollfd watched[2] = {{fd, POLLIN, 0}, {stop_fd, POLLIN, 0}};
    if (::poll(watched, 2, -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    // Output still waiting is read before a stop is obeyed, so no line is lost.
    if (watched[0].revents != 0) {
      char buffer[4096];
      ssize_t got = ::read(fd, buffer, sizeof buffer);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      pending.append(buffer, static_cast<std::size_t>(got));
      for (std::size_t end; (end = pending.find('\n')) != std::string::npos;) {
        take(pending.substr(0, end));
        pending.erase(0, end + 1);
      }
      continue;
    }
    if (watched[1].revents != 0) break;
  }
  if (!pending.empty()) take(pending);
  ::close(fd);
  std::lock_guard<std::mutex> hold(said_lock_);
  output_ended_ = true;
  said_end_.notify_all();
}

bool helper_process::output_ended(std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> hold(said_lock_);
  return said_end_.wait_for(hold, limit, [this] { return output_ended_; });
}

std::vector<std::string> helper_process::said() const {
  std::lock_guard<std::mutex> hold(said_lock_);
  return {said_.begin(), said_.end()};
}

std::optional<int> helper_process::status() {
  if (status_ || pid_ <= 0) return status_;
  int raw = 0;
  pid_t done = ::waitpid(pid_, &raw, WNOHANG);
  if (done == pid_) {
    status_ = Decode(raw);
  } else if (done < 0 && errno == ECHILD) {
    status_ = -1;
  }
  return status_;
}

bool helper_process::wait_for_end(std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!status()) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    if (end_fd_ < 0) {
      ::usleep(2000);  // nothing tells of the end: look again soon
      continue;
    }
    pollfd ended = {end_fd_, POLLIN, 0};
    ::poll(&ended, 1, static_cast<int>(std::min<long long>(left.count(), INT_MAX)));
  }
  return true;
}

int helper_process::end(std::chrono::milliseconds limit) {
  if (!wait_for_end(limit)) {
    ::kill(pid_, SIGTERM);
    if (!wait_for_end(std::chrono::seconds(1))) {
      ::kill(pid_, SIGKILL);
      int raw = 0;
      pid_t done;
      while ((done = ::waitpid(pid_, &raw, 0)) < 0 && errno == EINTR) {
      }
      status_ = done == pid_ ? Decode(raw) : -1;
    }
  }
  return *status_;
}

}  // namespace qem_client
