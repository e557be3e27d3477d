#include "channel/log_file.h"

#include <time.h>

#include "platform/exceptions.h"
#include "platform/system.h"
#include "platform/text.h"

log_file::log_file(const platform::FolderItem& file) {
  f = file;
  stream_ = platform::TextOutputStream::Open(file);
  indent_.clear();
  dummy = false;
  process_id = platform::Str(static_cast<std::int64_t>(platform::my_process_id()));
  app_name = platform::System::ExecutableName();
}

std::shared_ptr<log_file> log_file::make_null() {
  auto log = std::make_shared<log_file>();
  log->operator_convert(null_log);
  return log;
}

std::shared_ptr<log_file> log_file::indent() const {
  auto deeper = std::make_shared<log_file>();
  deeper->indent_ = indent_ + "    ";
  deeper->stream_ = stream_;
  deeper->dummy = dummy;
  deeper->f = f;
  deeper->process_id = process_id;
  deeper->app_name = app_name;
  return deeper;
}

void log_file::operator_convert(int value) {
  if (value != null_log) {
    throw platform::UnsupportedFormatException("Unsupported log_file type " +
                                               platform::Str(static_cast<std::int64_t>(value)));
  }
  dummy = true;
}

void log_file::operator_subscript(const std::string& message) {
  write(message);
}

void log_file::write(const std::string& message) {
  if (dummy) return;
  struct timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  struct tm local;
  ::localtime_r(&now.tv_sec, &local);
  if (!stream_) throw platform::NilObjectException("log_file::write on a log with no stream");
  using platform::Str;
  std::string line;
  line.reserve(64 + app_name.size() + indent_.size() + message.size());
  line += app_name;
  line += "|(" + process_id + ")|";
  line += Str(std::int64_t{local.tm_year} + 1900) + "-" + Str(local.tm_mon + 1, "00") + "-" +
          Str(local.tm_mday, "00") + " " + Str(local.tm_hour, "00") + ":" +
          Str(local.tm_min, "00") + ":" + Str(local.tm_sec, "00") + ":" +
          Str(static_cast<std::int64_t>(now.tv_nsec), "000000000");
  line += '|';  // not "|" + Str(...): GCC 12 warns falsely (-Wrestrict) on that at -O3
  line += Str(static_cast<std::int64_t>(get_precise_time()));
  line += '|';
  line += indent_;
  line += message;
  stream_->WriteLine(line);
  stream_->Flush();
}
