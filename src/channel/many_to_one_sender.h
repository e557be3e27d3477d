#pragma once
// The sending end of a channel: it appends records and leaves. It never looks at the receiver,
// so a message sent while nobody reads waits in the data file.

#include <memory>
#include <string>

#include "channel/many_to_one_base.h"

namespace many_to_one {

class sender_op;

// A channel id and a log, nothing more; good for any number of ops. Lives in a std::shared_ptr.
class sender : public base {
 public:
  // Stores both; touches no file.
  sender(std::string id, std::shared_ptr<log_file> log);

  // A new critical section with this sender's log. Blocks until the entry lock is held: one
  // attempt when it is free, then 33 to 65 ms after each attempt that found it held. Throws
  // IOException when the lock can never be had or the folder can't be made.
  std::shared_ptr<sender_op> op();

 protected:
  std::shared_ptr<base_op> make_op() override;
};

// One critical section in which records are appended. Use: op, write, drop it at once.
class sender_op : public base_op {
 public:
  sender_op(std::shared_ptr<sender> endpoint, std::shared_ptr<log_file> log);

  sender& sock() const override;
  // Appends `text` and one NUL to the data file in one write, and closes the file again before
  // it returns, so the record is whole on disk before the op (and the lock) can end. The text
  // must hold no NUL, or it arrives as two messages. Throws, saying why, when the data file
  // can't be opened or is refused (nothing was added), and when the write fails (what it wrote
  // is cut back first): see base_op::append_to_data.
  virtual void write(const std::string& text);
};

}  // namespace many_to_one
