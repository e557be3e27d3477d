#include "server/message_forwarder_many_to_one.h"

#include <memory>

#include "channel/log_file.h"
#include "channel/many_to_one_sender.h"

message_forwarder_many_to_one::message_forwarder_many_to_one(std::string channel_)
    : channel(std::move(channel_)) {}

void message_forwarder_many_to_one::write(const std::string& message) {
  auto sock = std::make_shared<many_to_one::sender>(channel, log_file::make_null());
  auto op = sock->op();
  op->write(message);
  // The op, and with it the entry lock, goes here, then the sender.
}
