#include "channel/many_to_one_receiver.h"

#include "platform/clock.h"
#include "platform/exceptions.h"
#include "platform/text.h"

namespace many_to_one {

receiver::receiver(std::string id, std::shared_ptr<log_file> log)
    : base(std::move(id), std::move(log)) {}

std::shared_ptr<receiver> receiver::make(const std::string& id, std::shared_ptr<log_file> log) {
  auto end = std::make_shared<receiver>(id, log);
  end->receiver_lock = lock_file::make(end->receiver_mutex(), log);
  if (!end->receiver_lock) return nullptr;
  return end;
}

platform::FolderItem receiver::make_receiver_mutex(const std::string& id) {
  check_id(id);
  return platform::SpecialFolder::Preferences().Child("qem.many_to_one.r." + id);
}

bool receiver::probe(const std::string& id, const std::shared_ptr<log_file>& log, bool strict) {
  const auto mutex = make_receiver_mutex(id);  // a refused id goes before any word is logged
  log->write("many_to_one.is_occupied: Checking if occupied: " + id);
  // Held until the end of this call: the release then closes and deletes the file.
  auto attempt = std::make_shared<lock_file>(mutex, log);
  if (!attempt->failed()) {
    log->write("many_to_one.is_occupied: Is not occupied: " + id);
    return false;
  }
  if (strict && !lock_file::is_contention(attempt->error_number())) {
    throw platform::IOException("Cannot probe the receiver lock " + attempt->nativepath(),
                                attempt->error_number());
  }
  log->write("many_to_one.is_occupied: Is occupied: " + id);
  return true;
}

bool receiver::is_occupied(const std::string& id, std::shared_ptr<log_file> log) {
  if (!log) throw platform::NilObjectException("is_occupied needs a log");
  return probe(id, log, false);
}

void receiver::await_state(const std::string& id, const std::shared_ptr<log_file>& log,
                           bool occupied) {
  if (!log) throw platform::NilObjectException("await needs a log");
  check_id(id);
  double start = platform::Microseconds();
  const std::string prefix = occupied ? "many_to_one.receiver.await_until_occupied: "
                                      : "many_to_one.receiver.await_until_not_occupied: ";
  log->write(prefix + id);
  // Test first, sleep after; each test gets a null log of its own.
  while (probe(id, log_file::make_null(), true) != occupied) {
    platform::SleepCurrent(static_cast<int>(33 + 33 * platform::Rnd()));
  }
  log->write(prefix + id + " took " +
             platform::Str(static_cast<std::int64_t>(platform::Microseconds() - start), "0"));
}

void receiver::await_until_occupied(const std::string& id, std::shared_ptr<log_file> log) {
  await_state(id, log, true);
}

void receiver::await_until_not_occupied(const std::string& id, std::shared_ptr<log_file> log) {
  await_state(id, log, false);
}

void receiver::close_if_empty() {
  if (closed()) return;
  auto close_op = op();
  close_op->flush_file_to_buffer();
  if (!buffer_.empty()) return;
  log->write("many_to_one.receiver.close_if_empty: About to relinquish.");
  receiver_lock = nullptr;
  log->write("many_to_one.receiver.close_if_empty: receiver_lock relinquished.");
  close_op = nullptr;
  log->write("many_to_one.receiver.close_if_empty: close_op relinquished.");
}

bool receiver::keep_receiver_lock() {
  if (closed()) return false;
  if (receiver_lock->named()) return true;
  auto again = lock_file::make(receiver_mutex(), log);
  if (!again) return false;
  receiver_lock = std::move(again);
  return true;
}

std::shared_ptr<receiver_op> receiver::op() {
  if (closed()) return nullptr;
  return std::make_shared<receiver_op>(std::static_pointer_cast<receiver>(shared_from_this()));
}

bool receiver::data_waiting() const {
  return channel_folder().Child("data").Exists();
}

std::shared_ptr<receiver_op> receiver::try_op() {
  if (closed()) return nullptr;
  auto held = lock_file::try_occupy(entry_mutex());
  if (!held) return nullptr;
  return std::make_shared<receiver_op>(std::static_pointer_cast<receiver>(shared_from_this()),
                                       std::move(held));
}

std::shared_ptr<base_op> receiver::make_op() {
  return op();
}

receiver_op::receiver_op(std::shared_ptr<receiver> endpoint)
    : base_op(std::move(endpoint), log_file::make_null()) {}

receiver_op::receiver_op(std::shared_ptr<receiver> endpoint, std::shared_ptr<lock_file> held)
    : base_op(std::move(endpoint), log_file::make_null(), std::move(held)) {}

receiver& receiver_op::sock() const {
  return static_cast<receiver&>(*sock_);
}

void receiver_op::flush_file_to_buffer() {
  auto file = data_file();
  if (!file.Exists()) return;
  sock().buffer_ += read_data();
  // Under an entry lock that lost its name another party may be appending at this moment, and
  // what it adds after the read would go with the file. Left in place, the records read now
  // come again with the next flush: twice, never lost. What remains is the moment between this
  // check and the delete, should the name be lost just then (see ~lock_file).
  if (!entry_lock_named()) return;
  file.Delete();
}

void receiver_op::purge() {
  auto file = data_file();
  if (!entry_lock_named()) return;  // as in flush_file_to_buffer
  if (file.Exists()) file.Delete();
}

std::string receiver_op::read() {
  flush_file_to_buffer();
  std::string& buffer = sock().buffer_;
  std::size_t place = buffer.find('\0');
  if (place == std::string::npos) return "";
  std::string result = buffer.substr(0, place);
  buffer.erase(0, place + 1);
  return result;
}

std::vector<std::string> receiver_op::read_all() {
  flush_file_to_buffer();
  std::string& buffer = sock().buffer_;
  std::vector<std::string> records;
  std::size_t start = 0;
  for (std::size_t place; (place = buffer.find('\0', start)) != std::string::npos;) {
    records.push_back(buffer.substr(start, place - start));
    start = place + 1;
  }
  buffer.erase(0, start);
  return records;
}

}  // namespace many_to_one
