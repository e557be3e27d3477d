#include "channel/lock_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/clock.h"
#include "platform/exceptions.h"
#include "platform/text.h"

namespace {

// One attempt: open (creating the file) and take the exclusive lock without waiting, then make
// sure the locked file still carries the name. A holder unlinks the name before it closes, so a
// descriptor whose inode no longer matches the path belongs to a released lock and must not count
// as held: otherwise a party that opened the old file and a party that made a new one could both
// hold the lock. Gives the descriptor, or -1 with errno set.
int Attempt(const char* path) {
#ifdef O_EXLOCK
  int fd = ::open(path, O_RDWR | O_NONBLOCK | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_EXLOCK, 0777);
  if (fd < 0) return -1;
#else
  int fd = ::open(path, O_RDWR | O_NONBLOCK | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0777);
  if (fd < 0) return -1;
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    int error = errno;
    ::close(fd);
    errno = error;
    return -1;
  }
#endif
  struct stat held, named;
  if (::fstat(fd, &held) != 0 || ::stat(path, &named) != 0 || held.st_dev != named.st_dev ||
      held.st_ino != named.st_ino) {
    ::close(fd);
    errno = EWOULDBLOCK;  // the holder was releasing: as good as held by somebody else
    return -1;
  }
  return fd;
}

int SpreadMilliseconds(double base, double spread) {
  return static_cast<int>(base + spread * platform::Rnd());
}

std::string Elapsed(double start) {
  return platform::Str(static_cast<std::int64_t>(platform::Microseconds() - start), "0");
}

[[noreturn]] void Hopeless(const std::string& path, int error) {
  throw platform::IOException("Cannot lock " + path + ": " + std::strerror(error), error);
}

}  // namespace

lock_file::lock_file(const platform::FolderItem& file, std::shared_ptr<log_file> log_) {
  if (!log_) throw platform::NilObjectException("lock_file needs a log");
  log = std::move(log_);
  log->write("lock_file.constructor: " + file.NativePath());
  f = file;
  int fd = Attempt(f.NativePath().c_str());
  error_ = fd < 0 ? errno : 0;
  hdl = static_cast<std::int64_t>(fd);
}

lock_file::~lock_file() {
  if (failed()) return;
  // Unlink while the lock is still held, then close: a contender that opened the old file in
  // between finds the name gone or pointing elsewhere and does not count its lock.
  f.Delete();
  ::close(static_cast<int>(hdl));
}

bool lock_file::is_contention(int error_number) {
  return error_number == EWOULDBLOCK || error_number == EAGAIN || error_number == EINTR;
}

std::shared_ptr<lock_file> lock_file::make(const platform::FolderItem& file,
                                           std::shared_ptr<log_file> log) {
  auto lock = std::make_shared<lock_file>(file, std::move(log));
  if (lock->failed()) return nullptr;
  return lock;
}

std::shared_ptr<lock_file> lock_file::make(const std::string& name, std::shared_ptr<log_file> log) {
  return make(platform::SpecialFolder::Temporary().Child(name), std::move(log));
}

std::shared_ptr<lock_file> lock_file::attempt(const platform::FolderItem& file) {
  auto lock = std::make_shared<lock_file>(file, log_file::make_null());
  if (!lock->failed()) return lock;
  if (!is_contention(lock->error_number())) Hopeless(file.NativePath(), lock->error_number());
  return nullptr;
}

std::shared_ptr<lock_file> lock_file::try_occupy(const platform::FolderItem& file) {
  return attempt(file);
}

std::shared_ptr<lock_file> lock_file::occupy_as(const platform::FolderItem& file,
                                                const std::string& shown,
                                                const std::shared_ptr<log_file>& log) {
  double start = platform::Microseconds();
  log->write("Waiting to lock " + shown);
  // The first attempt comes at once; only an attempt that found the lock held is followed by a
  // sleep, whose random spread keeps contenders from retrying in step.
  std::shared_ptr<lock_file> lock = attempt(file);
  while (!lock) {
    platform::SleepCurrent(SpreadMilliseconds(33, 33));
    lock = attempt(file);
  }
  log->write("Locked " + shown + "; took " + Elapsed(start));
  return lock;
}

void lock_file::await_as(const platform::FolderItem& file, const std::string& shown,
                         const std::shared_ptr<log_file>& log) {
  double start = platform::Microseconds();
  log->write("Await " + shown + " occupied by other.");
  // The first attempt comes at once; a lock that was obtained is released again right away.
  while (attempt(file) != nullptr) {
    platform::SleepCurrent(SpreadMilliseconds(50, 100));
  }
  log->write("Confirmed " + shown + " occupied by other; took " + Elapsed(start));
}

std::shared_ptr<lock_file> lock_file::occupy(const platform::FolderItem& file,
                                             std::shared_ptr<log_file> log) {
  return occupy_as(file, file.NativePath(), log);
}

std::shared_ptr<lock_file> lock_file::occupy(const std::string& name,
                                             std::shared_ptr<log_file> log) {
  return occupy_as(platform::SpecialFolder::Temporary().Child(name), name, log);
}

void lock_file::await_occupied_by_other(const platform::FolderItem& file,
                                        std::shared_ptr<log_file> log) {
  await_as(file, file.NativePath(), log);
}

void lock_file::await_occupied_by_other(const std::string& name, std::shared_ptr<log_file> log) {
  await_as(platform::SpecialFolder::Temporary().Child(name), name, log);
}
