#include "channel/lock_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "channel/names.h"
#include "platform/clock.h"
#include "platform/exceptions.h"
#include "platform/text.h"
#include "platform/text_stream.h"

namespace {

// One attempt: open (creating the file, private to the user; a file the peer made is used as it
// is, and a symbolic link in its place is never followed) and take the exclusive lock without
// waiting, then make sure the locked file still carries the name. A holder unlinks the name
// before it closes, so a descriptor whose inode no longer matches the path belongs to a released
// lock and must not count as held: otherwise a party that opened the old file and a party that
// made a new one could both hold the lock. Gives the descriptor, or -1 with errno set.
int Attempt(const char* path) {
#ifdef O_EXLOCK
  int fd = ::open(path, O_RDWR | O_NONBLOCK | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_EXLOCK, 0600);
  if (fd < 0) return -1;
#else
  int fd = ::open(path, O_RDWR | O_NONBLOCK | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
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
  throw platform::IOException("Cannot lock " + path + ": " + platform::OpenFailure(error), error);
}

// The file `name` in the temporary folder: the one place where a bare lock name becomes a path.
// A name that would not be one file of that folder is refused before anything is touched.
platform::FolderItem TemporaryChild(const std::string& name) {
  auto why = name.empty() ? std::optional<std::string>("is empty") : names::lock_name_refusal(name);
  if (why) {
    throw platform::UnsupportedFormatException("lock name " + names::quoted(name) +
                                               " refused: it " + *why);
  }
  return platform::SpecialFolder::Temporary().Child(name);
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
  //
  // The peer releases the other way round, close first and delete after. A lock of ours taken
  // between those two steps passes the attempt's check, then loses its name to the peer's
  // delete, and a newer party makes a new file and holds it too: two holders that nothing on
  // this side can see coming. Deleting by path here would then take the newer holder's file,
  // and a fourth party would get in beside it; so the name goes only while it is still ours,
  // and one bad moment stays one.
  //
  // What remains: the name can still change hands between the check and the unlink, when the
  // peer's late delete and a newer holder's create both fall into those microseconds, and only
  // for a lock that was itself taken inside the peer's release. There is no unlink that names
  // the file it means, so this window can be narrowed but not closed.
  if (named()) f.Delete();
  ::close(static_cast<int>(hdl));
}

bool lock_file::named() const {
  if (failed()) return false;
  struct stat held, at_path;
  return ::fstat(static_cast<int>(hdl), &held) == 0 &&
         ::lstat(f.NativePath().c_str(), &at_path) == 0 && held.st_dev == at_path.st_dev &&
         held.st_ino == at_path.st_ino;
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
  return make(TemporaryChild(name), std::move(log));
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
  return occupy_as(TemporaryChild(name), name, log);
}

void lock_file::await_occupied_by_other(const platform::FolderItem& file,
                                        std::shared_ptr<log_file> log) {
  await_as(file, file.NativePath(), log);
}

void lock_file::await_occupied_by_other(const std::string& name, std::shared_ptr<log_file> log) {
  await_as(TemporaryChild(name), name, log);
}
