#include "channel/many_to_one_sender.h"

namespace many_to_one {

namespace {

// The first `count` characters of UTF-8 text; a character is a lead byte and its continuation
// bytes, so no character is cut.
std::string LeftCharacters(const std::string& text, std::size_t count) {
  std::size_t characters = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool lead = (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80;
    if (lead && characters++ == count) return text.substr(0, i);
  }
  return text;
}

}  // namespace

sender::sender(std::string id, std::shared_ptr<log_file> log)
    : base(std::move(id), std::move(log)) {}

std::shared_ptr<sender_op> sender::op() {
  return std::make_shared<sender_op>(std::static_pointer_cast<sender>(shared_from_this()), log);
}

std::shared_ptr<base_op> sender::make_op() {
  return op();
}

sender_op::sender_op(std::shared_ptr<sender> endpoint, std::shared_ptr<log_file> log)
    : base_op(std::move(endpoint), std::move(log)) {}

sender& sender_op::sock() const {
  return static_cast<sender&>(*sock_);
}

void sender_op::write(const std::string& text) {
  const std::string path = data_file().NativePath();
  log->write("Starting to write data to " + path + ".");
  std::string record = text;
  record.push_back('\0');
  // One append, and the file is closed again before write returns.
  append_to_data(record);
  log->write("Data: " + LeftCharacters(record, 1000));
  log->write("Finished writing data to " + path + ".");
}

}  // namespace many_to_one
