#include "platform/change_watch.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "platform/clock.h"

#if defined(__linux__)
#include <sys/inotify.h>

#include <climits>
#elif defined(__APPLE__)
#include <fcntl.h>
#include <sys/event.h>
#endif

namespace platform {

#if defined(__linux__)

namespace {
// What makes or fills the file: a writer's close (a sender appends, then closes, then lets go of
// the channel's entry lock, so the close is the last moment before the file can be read) and a
// file moved in whole. What ends the watch: the folder going or moving.
constexpr std::uint32_t kFileMask = IN_CLOSE_WRITE | IN_MOVED_TO;
constexpr std::uint32_t kGoneMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED | IN_UNMOUNT;
}  // namespace

ChangeWatch::ChangeWatch() : fd_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

ChangeWatch::~ChangeWatch() {
  if (fd_ >= 0) ::close(fd_);
}

bool ChangeWatch::Watch(const FolderItem& folder, const std::string& name) {
  if (fd_ < 0) return false;
  if (watch_ >= 0) ::inotify_rm_watch(fd_, watch_);
  name_ = name;
  watch_ = ::inotify_add_watch(fd_, folder.NativePath().c_str(),
                               kFileMask | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
  return watch_ >= 0;
}

bool ChangeWatch::Watching() const noexcept {
  return watch_ >= 0;
}

bool ChangeWatch::Drain() {
  if (fd_ < 0) return false;
  bool told = false;
  alignas(inotify_event) char buffer[16 * (sizeof(inotify_event) + NAME_MAX + 1)];
  for (;;) {
    const ssize_t got = ::read(fd_, buffer, sizeof buffer);
    if (got <= 0) break;  // EAGAIN: nothing more waits
    for (ssize_t at = 0; at < got;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      // The queue overflowed: what was lost may have been ours.
      if (event->mask & IN_Q_OVERFLOW) told = true;
      // Events of a folder watched before Watch was last called are stale.
      if (event->wd != watch_ || watch_ < 0) continue;
      if (event->mask & kGoneMask) {
        if (!(event->mask & IN_IGNORED)) ::inotify_rm_watch(fd_, watch_);
        watch_ = -1;
        told = true;
      } else if ((event->mask & kFileMask) && event->len > 0 && name_ == event->name) {
        told = true;
      }
    }
  }
  return told;
}

#elif defined(__APPLE__)

namespace {
constexpr int kFolder = 1, kFile = 2;

void Register(int queue, int fd, unsigned flags, int tag) {
  struct kevent change;
  EV_SET(&change, fd, EVFILT_VNODE, EV_ADD | EV_CLEAR, flags, 0, reinterpret_cast<void*>(tag));
  ::kevent(queue, &change, 1, nullptr, 0, nullptr);
}
}  // namespace

ChangeWatch::ChangeWatch() : fd_(::kqueue()) {
  if (fd_ >= 0) ::fcntl(fd_, F_SETFD, FD_CLOEXEC);
}

ChangeWatch::~ChangeWatch() {
  if (file_fd_ >= 0) ::close(file_fd_);
  if (folder_fd_ >= 0) ::close(folder_fd_);
  if (fd_ >= 0) ::close(fd_);
}

bool ChangeWatch::Watch(const FolderItem& folder, const std::string& name) {
  if (fd_ < 0) return false;
  // Closing a descriptor takes its registrations off the queue.
  if (file_fd_ >= 0) ::close(file_fd_);
  if (folder_fd_ >= 0) ::close(folder_fd_);
  file_fd_ = -1;
  folder_ = folder;
  name_ = name;
  folder_fd_ = ::open(folder.NativePath().c_str(), O_EVTONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder_fd_ < 0) return false;
  Register(fd_, folder_fd_, NOTE_WRITE | NOTE_DELETE | NOTE_RENAME | NOTE_REVOKE, kFolder);
  ArmFile();
  return true;
}

void ChangeWatch::ArmFile() {
  if (file_fd_ >= 0 || folder_fd_ < 0) return;
  file_fd_ = ::open(folder_.Child(name_).NativePath().c_str(), O_EVTONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file_fd_ >= 0) {
    Register(fd_, file_fd_, NOTE_WRITE | NOTE_EXTEND | NOTE_DELETE | NOTE_RENAME, kFile);
  }
}

bool ChangeWatch::Watching() const noexcept {
  return folder_fd_ >= 0;
}

bool ChangeWatch::Drain() {
  if (fd_ < 0) return false;
  bool told = false, entries_changed = false;
  struct kevent events[16];
  const timespec now{};
  for (int got; (got = ::kevent(fd_, nullptr, 0, events, 16, &now)) > 0;) {
    for (int i = 0; i < got; ++i) {
      const auto tag = reinterpret_cast<std::intptr_t>(events[i].udata);
      const auto flags = events[i].fflags;
      if (tag == kFolder && folder_fd_ >= 0) {
        if (flags & (NOTE_DELETE | NOTE_RENAME | NOTE_REVOKE)) {
          if (file_fd_ >= 0) ::close(file_fd_);
          ::close(folder_fd_);
          file_fd_ = folder_fd_ = -1;
          told = true;
        } else {
          entries_changed = true;  // which entry, the folder does not say
        }
      } else if (tag == kFile && file_fd_ >= 0) {
        if (flags & (NOTE_DELETE | NOTE_RENAME)) {
          ::close(file_fd_);
          file_fd_ = -1;
        } else {
          told = true;
        }
      }
    }
  }
  // The file came when it is there now and was not watched before.
  if (entries_changed && file_fd_ < 0) {
    ArmFile();
    told = told || file_fd_ >= 0;
  }
  return told;
}

#else

ChangeWatch::ChangeWatch() = default;
ChangeWatch::~ChangeWatch() = default;

bool ChangeWatch::Watch(const FolderItem&, const std::string& name) {
  name_ = name;
  return false;
}

bool ChangeWatch::Watching() const noexcept {
  return watch_ >= 0;
}

bool ChangeWatch::Drain() {
  return false;
}

#endif

bool ChangeWatch::Wait(int milliseconds) {
  if (fd_ < 0) {
    SleepCurrent(milliseconds);
    return false;
  }
  const double deadline = Microseconds() + milliseconds * 1000.0;
  for (;;) {
    const double left_us = deadline - Microseconds();
    if (left_us <= 0) return false;
    pollfd ready{fd_, POLLIN, 0};
    const int got = ::poll(&ready, 1, static_cast<int>((left_us + 999) / 1000));
    if (got < 0 && errno != EINTR) {
      SleepCurrent(static_cast<int>(left_us / 1000));
      return false;
    }
    if (got > 0 && Drain()) return true;
  }
}

}  // namespace platform
