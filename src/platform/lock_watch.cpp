#include "platform/lock_watch.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace platform {

namespace {

// The signal that ends a wait in progress. It is ignored unless handled, so a stray one from
// outside does nothing; its handler is installed without SA_RESTART, so that a blocked lock call
// gives up with EINTR.
constexpr int kInterrupt = SIGURG;

extern "C" void Interrupted(int) {}

void InstallInterrupt() {
  static std::once_flag installed;
  std::call_once(installed, [] {
    struct sigaction action {};
    action.sa_handler = Interrupted;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    ::sigaction(kInterrupt, &action, nullptr);
  });
}

// Blocks until the lock of `path` is had, then lets go of it at once and closes: 0. The errno of
// an open or lock that fails; EINTR when a signal ended the wait. The flags are those of an
// attempt at the lock, without the haste: the same file is made when missing, no symbolic link
// is followed, and a launched program inherits nothing.
int AwaitFree(const std::string& path) {
#ifdef O_EXLOCK
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_EXLOCK, 0600);
  if (fd < 0) return errno;
#else
  const int fd = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd < 0) return errno;
  if (::flock(fd, LOCK_EX) != 0) {
    const int error = errno;
    ::close(fd);
    return error;
  }
#endif
  // Let go before the close, which a child forked in between could otherwise delay.
  ::flock(fd, LOCK_UN);
  ::close(fd);
  return 0;
}

}  // namespace

LockWatch::LockWatch() {
  if (::pipe(pipe_) != 0) {
    pipe_[0] = pipe_[1] = -1;
    return;
  }
  for (int fd : pipe_) {
    ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
  }
}

LockWatch::~LockWatch() {
  if (thread_.joinable()) {
    std::unique_lock<std::mutex> held(mutex_);
    stop_ = true;
    changed_.notify_all();
    // A thread in its wait for the lock is interrupted. A signal that comes just before the
    // thread enters that wait is lost; the next one is not.
    while (!finished_) {
      if (in_wait_) ::pthread_kill(thread_.native_handle(), kInterrupt);
      changed_.wait_for(held, std::chrono::milliseconds(2));
    }
    held.unlock();
    thread_.join();
  }
  for (int fd : pipe_) {
    if (fd >= 0) ::close(fd);
  }
}

bool LockWatch::Watch(const FolderItem& file) {
  if (pipe_[0] < 0) return false;
  std::lock_guard<std::mutex> held(mutex_);
  if (armed_) return true;
  path_ = file.NativePath();
  armed_ = true;
  seen_ = Seen::Nothing;
  if (!thread_.joinable()) {
    InstallInterrupt();
    try {
      thread_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
      armed_ = false;
      return false;
    }
  }
  changed_.notify_all();
  return true;
}

bool LockWatch::Waiting() const {
  std::lock_guard<std::mutex> held(mutex_);
  return armed_;
}

LockWatch::Seen LockWatch::Drain() {
  char drained[16];
  while (::read(pipe_[0], drained, sizeof drained) > 0) {
  }
  std::lock_guard<std::mutex> held(mutex_);
  const Seen seen = seen_;
  seen_ = Seen::Nothing;
  return seen;
}

int LockWatch::Error() const {
  std::lock_guard<std::mutex> held(mutex_);
  return error_;
}

void LockWatch::Run() {
  // Signals for the process go to its other threads; this one takes only the interrupt.
  sigset_t others;
  sigfillset(&others);
  sigdelset(&others, kInterrupt);
  ::pthread_sigmask(SIG_SETMASK, &others, nullptr);
  std::unique_lock<std::mutex> held(mutex_);
  for (;;) {
    changed_.wait(held, [this] { return stop_ || armed_; });
    if (stop_) break;
    const std::string path = path_;
    in_wait_ = true;
    held.unlock();
    const int error = AwaitFree(path);
    held.lock();
    in_wait_ = false;
    if (error == EINTR) continue;  // stopping, or a stray interrupt: look again
    armed_ = false;
    seen_ = error == 0 ? Seen::Free : Seen::Failed;
    error_ = error;
    const char byte = 1;
    while (::write(pipe_[1], &byte, 1) < 0 && errno == EINTR) {
    }
  }
  finished_ = true;
  changed_.notify_all();
}

}  // namespace platform
