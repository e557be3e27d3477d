#include "app/qem_util.h"

#include <utility>

qem_util::qem_util(std::string stay_alive_key_, std::string channel_, std::string reply_channel_,
                   std::string launch_key_)
    : launch_key(std::move(launch_key_)),
      stay_alive_key(std::move(stay_alive_key_)),
      channel(std::move(channel_)),
      reply_channel(std::move(reply_channel_)) {
  timer_ = std::make_unique<platform::Timer>();
  timer_->Period(25);
  timer_->AddActionHandler([this](platform::Timer& timer) { poll(timer); });
  timer_->RunMode(platform::Timer::Multiple);
}

void qem_util::poll(platform::Timer& /*timer*/) {
  if (!launched_signal) launched_signal = lock_file::make(launch_key, log_file::make_null());
  auto probe = lock_file::make(stay_alive_key, log_file::make_null());
  if (probe) platform::Quit(0);
  // The tick is not cut short by Quit; the probe goes, and with it the lock, as the tick ends.
}
