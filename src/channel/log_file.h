#pragma once
// log_file: the handle through which lock and channel operations report each step. It is either
// a real log, which appends one line per message to a text file and flushes it at once, or a null
// log, which swallows everything. Callers always hand over a handle, never nil.

#include <cstdint>
#include <memory>
#include <string>

#include "platform/folder_item.h"
#include "platform/text_stream.h"

class log_file {
 public:
  // The one defined value of log_file.type: the null log.
  enum type : int { null_log = 0 };

  // An empty handle. Given operator_convert(0) it becomes a null log; written to as it is, it
  // throws NilObjectException.
  log_file() = default;
  // Opens `file` for appending (created if missing). Throws IOException when it can't be opened.
  explicit log_file(const platform::FolderItem& file);
  virtual ~log_file() = default;

  // A new null log, made as every place of use makes one: empty handle, operator_convert(0).
  static std::shared_ptr<log_file> make_null();

  // A new handle on the same file whose messages stand four blanks deeper. Shares the stream.
  virtual std::shared_ptr<log_file> indent() const;
  // On a fresh handle: 0 makes it a null log; any other value throws UnsupportedFormatException.
  virtual void operator_convert(int value);
  // Forwards to write.
  virtual void operator_subscript(const std::string& message);
  // Writes one line "program|(pid)|local time|0|indent+message" and flushes it, so each message
  // is on disk before write returns. Does nothing at all on a null log. Throws IOException from
  // the stream, NilObjectException on an empty handle.
  virtual void write(const std::string& message);

  // Always 0: the fourth field of a line carries no information, as readers of the logs expect.
  static std::uint64_t get_precise_time() { return 0; }

 private:
  std::string app_name;
  bool dummy = false;
  platform::FolderItem f;
  std::string indent_;
  std::string process_id;
  std::shared_ptr<platform::TextOutputStream> stream_;
};
