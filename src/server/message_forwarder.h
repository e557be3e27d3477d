#pragma once
// message_forwarder: what a reply travels outward through. A window knows nothing of channels;
// it hands finished texts to its forwarder.

#include <string>

class message_forwarder {
 public:
  virtual ~message_forwarder() = default;
  // Sends the finished text as it is; adds nothing.
  virtual void write(const std::string& message) = 0;
};
