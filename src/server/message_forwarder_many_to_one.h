#pragma once
// The forwarder that sends each reply as one record on a many_to_one channel.

#include <string>

#include "server/message_forwarder.h"

class message_forwarder_many_to_one : public message_forwarder {
 public:
  // Stores the channel id; touches no file, so an unusable or empty id goes unnoticed here.
  explicit message_forwarder_many_to_one(std::string channel);

  // Sends `message` through a sender made for this one message: takes the entry lock (blocking
  // only while another process holds it), appends the record, and lets go of the lock before it
  // returns, so nothing is held between messages. Does not wait for a reader. Exceptions of the
  // channel (IOException, NilObjectException) pass through to the caller.
  void write(const std::string& message) override;

 private:
  std::string channel;
};
