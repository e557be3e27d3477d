#pragma once
// lock_file: a held advisory lock on a named, always empty file. The lock is the BSD lock of
// flock(2) taken with the open in one non-blocking attempt (the lock a peer's O_EXLOCK open
// respects); it is held for exactly as long as the object lives. Occupied means that somebody
// holds that lock; the file's existence means nothing, and a file left by a dead holder is free.

#include <cstdint>
#include <memory>
#include <string>

#include "channel/log_file.h"
#include "platform/folder_item.h"

class lock_file {
 public:
  // One attempt at the lock on `file`; never waits. Writes "lock_file.constructor: " and the
  // path to `log`. Success or failure is read through failed(). Throws NilObjectException on a
  // nil log.
  lock_file(const platform::FolderItem& file, std::shared_ptr<log_file> log);
  // When the lock was obtained: deletes the file while still holding it, then closes it; the
  // delete only happens while the name still belongs to this lock's file (see named), so a lock
  // that lost its name never takes a newer holder's file with it. A failed attempt touches
  // nothing.
  virtual ~lock_file();
  lock_file(const lock_file&) = delete;
  lock_file& operator=(const lock_file&) = delete;

  virtual bool failed() const { return hdl == -1; }
  virtual std::string f_name() const { return f.Name(); }
  virtual std::string nativepath() const { return f.NativePath(); }
  // The errno of a failed attempt (EWOULDBLOCK when somebody else holds the lock); 0 if held.
  int error_number() const { return error_; }
  // True while the path still names the file this lock holds. It turns false when a peer that
  // releases by closing first and deleting after let go just as this lock was taken: from then
  // on a newer party can hold a lock of the same name at the same time. False for a failed
  // attempt. Looks at the disk afresh on every call.
  bool named() const;

  // One attempt: the held lock, or nil for every failure. Never throws for the attempt itself.
  // A lock file this makes is private to the user (0600, less the umask); one that is already
  // there is used as it is, and a symbolic link in its place is never followed (the attempt
  // fails).
  static std::shared_ptr<lock_file> make(const platform::FolderItem& file,
                                         std::shared_ptr<log_file> log);
  // The same on the child `name` of the temporary folder; nil also when that folder is missing.
  // A name that is no file name of its own there (empty, holding "/" or a NUL, "." or "..", too
  // long) is no attempt: UnsupportedFormatException, naming it and why, and no file touched.
  // The same holds for the other forms that take a name.
  static std::shared_ptr<lock_file> make(const std::string& name, std::shared_ptr<log_file> log);

  // Blocks the calling thread until the lock is obtained: attempts at once, and sleeps 33 to
  // 65 ms only after an attempt that found the lock held, so a free lock costs one attempt.
  // Never nil. Throws IOException naming the path and the reason at once when an attempt can
  // never succeed (missing folder, no permission, ...).
  static std::shared_ptr<lock_file> occupy(const platform::FolderItem& file,
                                           std::shared_ptr<log_file> log);
  static std::shared_ptr<lock_file> occupy(const std::string& name, std::shared_ptr<log_file> log);

  // Blocks until somebody else holds the lock: attempts at once, and after each attempt that
  // obtained (and so released again) the lock sleeps 50 to 149 ms. Returns after the first
  // attempt when the lock is already held. Throws IOException like occupy.
  static void await_occupied_by_other(const platform::FolderItem& file,
                                      std::shared_ptr<log_file> log);
  static void await_occupied_by_other(const std::string& name, std::shared_ptr<log_file> log);

  // One attempt with a null log, never waiting: the lock, or nil while somebody else holds it.
  // Throws IOException like occupy when the attempt can never succeed.
  static std::shared_ptr<lock_file> try_occupy(const platform::FolderItem& file);

  // True for errno values that mean "somebody else holds it" rather than "can never succeed".
  static bool is_contention(int error_number);

 private:
  // One attempt with a null log: the lock, nil while somebody else holds it; throws IOException
  // when the attempt can never succeed.
  static std::shared_ptr<lock_file> attempt(const platform::FolderItem& file);
  static std::shared_ptr<lock_file> occupy_as(const platform::FolderItem& file,
                                              const std::string& shown,
                                              const std::shared_ptr<log_file>& log);
  static void await_as(const platform::FolderItem& file, const std::string& shown,
                       const std::shared_ptr<log_file>& log);

  std::shared_ptr<log_file> log;
  platform::FolderItem f;
  std::int64_t hdl = -1;
  int error_ = 0;
};
