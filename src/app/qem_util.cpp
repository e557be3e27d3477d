#include "app/qem_util.h"

#include <utility>

#include "platform/clock.h"

qem_util::qem_util(std::string stay_alive_key_, std::string channel_, std::string reply_channel_,
                   std::string launch_key_)
    : reply_channel(std::move(reply_channel_)),
      launch_key(std::move(launch_key_)),
      stay_alive_key(std::move(stay_alive_key_)),
      channel(std::move(channel_)) {
  if (!open_channel()) return;
  timer_ = std::make_unique<platform::Timer>();
  timer_->Period(25);
  timer_->AddActionHandler([this](platform::Timer&) { poll(); });
  timer_->RunMode(platform::Timer::Multiple);
  // The first tick does not wait a period: the launch lock says "up" as soon as the helper can
  // serve.
  first_tick_ = std::make_unique<platform::Timer>();
  first_tick_->Period(0);
  first_tick_->AddActionHandler([this](platform::Timer&) { poll(); });
  first_tick_->RunMode(platform::Timer::Single);
}

qem_util::~qem_util() = default;

void qem_util::poll() {
  const double tick_start = platform::Microseconds();
  if (!launched_signal) launched_signal = lock_file::make(launch_key, log_file::make_null());
  auto probe = lock_file::make(stay_alive_key, log_file::make_null());
  if (probe) platform::Quit(0);
  // The tick is not cut short by Quit; the probe goes, and with it the lock, as the tick ends.
  read_messages(tick_start);
}
