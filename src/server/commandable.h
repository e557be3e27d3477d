#pragma once
// commandable: what a message travels inward to. The command server knows of a window no more
// than that it takes commands.

#include <memory>

#include "platform/dictionary.h"

class commandable {
 public:
  virtual ~commandable() = default;
  // Takes one whole message as the JSON reader built it, "obj_id" and "cmd" included.
  virtual void cmd(std::shared_ptr<platform::Dictionary> message) = 0;
};
