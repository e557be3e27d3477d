#pragma once
// qem_util: the command server. This half is its lifetime: the polling timer, the launch lock
// it takes to tell the starting application that it is up, and the watch on the stay-alive
// lock that the starting application holds for as long as it wants the helper.

#include <memory>
#include <string>

#include "channel/lock_file.h"
#include "platform/run_loop.h"

class qem_util {
 public:
  // Stores the names and starts the 25 ms repeating timer; the first tick comes from the run
  // loop after start-up has returned. Touches no file itself.
  qem_util(std::string stay_alive_key, std::string channel, std::string reply_channel,
           std::string launch_key);
  virtual ~qem_util() = default;

 private:
  // One tick, never waiting: take the launch lock if not yet held (then hold it for life);
  // try the stay-alive lock and Quit(0) if it could be had, which means the starting
  // application has let go or died; the probe is released on leaving the tick.
  void poll(platform::Timer& timer);

  std::shared_ptr<lock_file> launched_signal;
  std::string launch_key;
  std::string stay_alive_key;
  std::string channel;
  std::string reply_channel;
  std::unique_ptr<platform::Timer> timer_;
};
