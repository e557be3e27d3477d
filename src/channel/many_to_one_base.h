#pragma once
// many_to_one: a message channel between processes made only of files in the user's preferences
// folder. Any number of senders append NUL-ended records to one data file; one receiver takes
// them out. The far end may be another program, so every name and byte here is a shared format:
//
//   qem.many_to_one.<id>            entry lock: held by the one op in existence, of any party
//   qem.many_to_one.r.<id>          receiver lock: held while a receiver is open
//   qem.many_to_one.<id>.dir/       channel folder, made under the entry lock, never removed
//   qem.many_to_one.<id>.dir/data   records: the text, then one NUL; no header, no length
//
// This file has the two abstract classes both ends share: the endpoint `base` and the critical
// section `base_op`. Endpoints live in a std::shared_ptr, because every op keeps its endpoint.

#include <memory>
#include <string>
#include <string_view>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "platform/folder_item.h"

namespace many_to_one {

class base_op;

// Throws UnsupportedFormatException, naming the id and why, when the files of channel `id`
// would not be files of their own in the preferences folder (the id holds "/" or a NUL, is "."
// or "..", or is too long). Every place where an id becomes a path goes through it, so a
// refused id touches no file.
void check_id(const std::string& id);

// One end of a channel: a name and a log. Holding one costs nothing on disk.
class base : public std::enable_shared_from_this<base> {
 public:
  // Stores both; touches no file. Throws NilObjectException on a nil log, and refuses the id as
  // check_id does.
  base(std::string id, std::shared_ptr<log_file> log);
  virtual ~base() = default;
  base(const base&) = delete;
  base& operator=(const base&) = delete;

  // The entry lock's file, worked out anew on each call. Throws when there is no preferences
  // folder (NilObjectException) or it can't be made (IOException).
  virtual platform::FolderItem entry_mutex() const;
  // The channel folder "qem.many_to_one.<id>.dir", worked out anew on each call; throws like
  // entry_mutex.
  platform::FolderItem channel_folder() const;
  virtual const std::string& id() const { return id_; }
  // A new critical section on this channel. Each end gives its own kind; on `base` itself it
  // throws RuntimeException.
  std::shared_ptr<base_op> op() { return make_op(); }

 protected:
  virtual std::shared_ptr<base_op> make_op();

  std::string id_;
  std::shared_ptr<log_file> log;
};

// One critical section: while the object lives, this process holds the channel's entry lock, and
// only then may the channel folder, the data file or a receiver's buffer be touched. It must be
// short-lived and never nested with another op on the same channel in the same process (the
// second would wait for ever for the first).
class base_op {
 public:
  // Blocks until the entry lock is held (one attempt when it is free; no limit while others
  // hold it; "Waiting to lock " and "Locked " go to `log`), then makes the channel folder if it
  // is missing. Throws IOException at once when the lock can never be had, or the folder can't
  // be made or is refused (see ensure_folder); a lock already taken is then released again.
  base_op(std::shared_ptr<base> endpoint, std::shared_ptr<log_file> log);
  // Enters the critical section with an entry lock that the caller has already taken (`held`,
  // never nil); makes the channel folder if it is missing, as above. Never waits.
  base_op(std::shared_ptr<base> endpoint, std::shared_ptr<log_file> log,
          std::shared_ptr<lock_file> held);
  // Releases the entry lock.
  virtual ~base_op() = default;
  base_op(const base_op&) = delete;
  base_op& operator=(const base_op&) = delete;

  // "data" in the channel folder, whether or not it exists. Both ends use it only through
  // append_to_data and read_data.
  virtual platform::FolderItem data_file() const;
  // Creates the channel folder, private to the user (0700), if it is missing; IOException when
  // that fails. A folder already there is used only when it is the user's own and nobody else
  // may write to it: a symbolic link, a folder of another user, or one that group or others may
  // write to is refused with IOException naming the folder and why. Anyone who may write to it
  // could add commands or take the data file's place.
  virtual void ensure_folder() const;
  // Appends `bytes` to the data file as one piece, making the file (0600) when it is missing.
  // A data file that is a symbolic link (NilObjectException), that belongs to another user or
  // that group or others may write to (IOException) is refused, saying why, and nothing is
  // written. A write that fails part way is cut back before IOException, so a record is whole
  // or absent.
  void append_to_data(std::string_view bytes) const;
  // The whole content of the data file. Refuses the file as append_to_data does;
  // NilObjectException when it can't be opened, IOException when it can't be read.
  std::string read_data() const;
  // The channel folder "qem.many_to_one.<id>.dir" in the preferences folder.
  virtual platform::FolderItem folder() const;
  virtual base& sock() const { return *sock_; }
  // True while the entry lock still has its name, and so this op is alone on the channel. False
  // when a peer that releases by closing first and deleting after let go just as this op took
  // the lock: another party may then be inside the channel at the same time, and nothing may be
  // deleted that it could be writing to. Looks at the disk afresh on every call.
  bool entry_lock_named() const { return lock->named(); }

 protected:
  std::shared_ptr<lock_file> lock;
  std::shared_ptr<log_file> log;
  std::shared_ptr<base> sock_;
};

}  // namespace many_to_one
