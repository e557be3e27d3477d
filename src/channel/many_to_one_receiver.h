#pragma once
// The receiving end of a channel. An open receiver holds the receiver lock, which makes it the
// one receiver of its channel, and keeps in `buffer` what has left the data file but has not
// been handed out yet. Any process can ask, from the id alone, whether a receiver is open.

#include <memory>
#include <string>
#include <vector>

#include "channel/many_to_one_base.h"

namespace many_to_one {

class receiver_op;

class receiver : public base {
 public:
  // Reached through make; stores both and touches no file. Lives in a std::shared_ptr.
  receiver(std::string id, std::shared_ptr<log_file> log);

  // Opens the receiving end: one attempt at the receiver lock, never waits. Nil when another
  // receiver holds it (or it can't be had at all). Leaves stale records in the data file.
  static std::shared_ptr<receiver> make(const std::string& id, std::shared_ptr<log_file> log);
  // The receiver lock's file "qem.many_to_one.r.<id>" in the preferences folder. Refuses the id
  // as check_id does, and so do make, is_occupied and the awaits, before any file is touched.
  static platform::FolderItem make_receiver_mutex(const std::string& id);
  // True when the receiver lock can't be had, by an attempt that disturbs no holder; the probe
  // holds a free lock for a moment and deletes its file again. An attempt that can never
  // succeed counts as occupied here.
  static bool is_occupied(const std::string& id, std::shared_ptr<log_file> log);
  // Block until is_occupied gives true (false), testing first and sleeping 33 to 65 ms between
  // tests; no time limit. Throw IOException at once when the receiver lock can never be had, so
  // that they never wait for ever on a folder that can't be written.
  static void await_until_occupied(const std::string& id, std::shared_ptr<log_file> log);
  static void await_until_not_occupied(const std::string& id, std::shared_ptr<log_file> log);

  virtual platform::FolderItem receiver_mutex() const { return make_receiver_mutex(id()); }
  virtual bool closed() const { return receiver_lock == nullptr; }
  // Keeps this receiver the one of its channel when the receiver lock's file was deleted under
  // it (a cleaner of the folder), after which a second receiver could open beside it: while the
  // file still names the held lock, nothing; otherwise one attempt, never waiting, takes the
  // lock again under its name. True when this receiver holds the named lock afterwards; false
  // when another receiver took the name meanwhile (the lock held so far is kept) and when
  // closed. Throws like entry_mutex when there is no preferences folder.
  bool keep_receiver_lock();
  // Closes the receiver unless a record waits, in the file or in `buffer`. Blocks for an op.
  // The receiver lock goes while the entry lock is still held, so no record can slip in between
  // the test for emptiness and the close. Does nothing on a closed receiver.
  virtual void close_if_empty();
  // A new critical section, once the entry lock is held (at once when it is free); nil when
  // closed. The op never logs, whatever this receiver's log is.
  std::shared_ptr<receiver_op> op();
  // A new critical section if the entry lock can be had by one attempt, never waiting: nil
  // when somebody else holds it, and when closed. Throws IOException when the entry lock can
  // never be had. For a caller that must not block, such as a timer tick.
  std::shared_ptr<receiver_op> try_op();

  // True when the data file is on disk: a record may wait. Looked at without the entry lock and
  // without reading, so it is only a hint: records are read under the entry lock alone. Lets a
  // caller that polls skip the entry lock (and the making and removing of its file) while
  // nothing was sent. Throws like entry_mutex when there is no preferences folder.
  bool data_waiting() const;

  // Text that has left the data file and not been handed out: whole records, then possibly an
  // unterminated tail.
  const std::string& buffer() const { return buffer_; }

 protected:
  std::shared_ptr<base_op> make_op() override;

 private:
  friend class receiver_op;
  static bool probe(const std::string& id, const std::shared_ptr<log_file>& log, bool strict);
  static void await_state(const std::string& id, const std::shared_ptr<log_file>& log,
                          bool occupied);

  std::string buffer_;
  std::shared_ptr<lock_file> receiver_lock;
};

// One critical section of the receiver. Use: op, one of read, purge or flush_file_to_buffer,
// drop it at once.
class receiver_op : public base_op {
 public:
  // Enters the critical section with a new null log.
  explicit receiver_op(std::shared_ptr<receiver> endpoint);
  // The same with an entry lock already taken; never waits.
  receiver_op(std::shared_ptr<receiver> endpoint, std::shared_ptr<lock_file> held);

  receiver& sock() const override;
  // Moves the whole data file onto the end of the receiver's buffer and deletes the file; when
  // the entry lock lost its name the file stays, and its records come again later. Throws
  // NilObjectException or IOException, saying why, when the file can't be opened or read or
  // is refused (see base_op::read_data); the file and the buffer then stay as they were.
  virtual void flush_file_to_buffer();
  // Deletes the data file unread, unless the entry lock lost its name; the buffer is not
  // touched.
  virtual void purge();
  // Flushes the file, then hands out the text before the first NUL of the buffer and drops it
  // and the NUL from the buffer. "" when no whole record waits (and for an empty record).
  virtual std::string read();
  // Flushes the file, then hands out every whole record of the buffer in order, empty ones
  // included, and drops them and their NULs from the buffer; an unterminated tail stays.
  virtual std::vector<std::string> read_all();
};

}  // namespace many_to_one
