#include "server/qem_util.h"

#include <utility>

#include "platform/clock.h"
#include "platform/exceptions.h"
#include "platform/memory.h"

namespace {
// How often a tick looks whether the lock files still carry their names.
constexpr double kLockCheckMicroseconds = 1'000'000;
// How long after a window's delete the freed memory goes back: one walk over the heap serves
// all the deletes of a burst.
constexpr int kGiveBackMilliseconds = 250;
}  // namespace

qem_util::qem_util(std::string stay_alive_key_, std::string channel_, std::string reply_channel_,
                   std::string launch_key_, window_maker make_window, pacing pace)
    : reply_channel(std::move(reply_channel_)),
      make_window_(std::move(make_window)),
      pace_(pace),
      launch_key(std::move(launch_key_)),
      stay_alive_key(std::move(stay_alive_key_)),
      channel(std::move(channel_)) {
  if (!open_channel()) return;
  give_back_ = std::make_unique<platform::Timer>();
  give_back_->Period(kGiveBackMilliseconds);
  give_back_->AddActionHandler([](platform::Timer&) { platform::ReturnFreedMemory(); });
  if (pace_.watch_channel) {
    wake_ = std::make_unique<platform::Timer>();
    wake_->AddActionHandler([this](platform::Timer&) { woken(); });
    watcher_ = std::make_unique<platform::FolderWatcher>();
    watcher_->AddChangedHandler([this](platform::FolderWatcher&) { wake(); });
    watcher_->Watch(sock->channel_folder(), "data");
  }
  if (pace_.watch_stay_alive) {
    stay_alive_watch_ = std::make_unique<platform::LockWatcher>();
    stay_alive_watch_->AddSeenHandler(
        [this](platform::LockWatch::Seen seen) { stay_alive_seen(seen); });
  }
  timer_ = std::make_unique<platform::Timer>();
  timer_->Period(pace_.tick_ms);
  timer_->AddActionHandler([this](platform::Timer&) { poll(); });
  timer_->RunMode(platform::Timer::Multiple);
  // The first tick does not wait a period: the launch lock says "up" as soon as the helper can
  // serve.
  first_tick_ = std::make_unique<platform::Timer>();
  first_tick_->Period(0);
  first_tick_->AddActionHandler([this](platform::Timer&) { poll(); });
  first_tick_->RunMode(platform::Timer::Single);
}

qem_util::qem_util(std::string stay_alive_key_, std::string channel_, std::string reply_channel_,
                   std::string launch_key_, window_maker make_window)
    : qem_util(std::move(stay_alive_key_), std::move(channel_), std::move(reply_channel_),
               std::move(launch_key_), std::move(make_window), pacing{}) {}

qem_util::~qem_util() = default;

void qem_util::poll() {
  const double tick_start = platform::Microseconds();
  ++steps_.ticks;
  // Every tick of the safety net looks, however early its timer fired.
  const bool look_again =
      tick_start >= next_lock_check_ || tick_period() >= kLockCheckMicroseconds / 1000;
  if (look_again) {
    next_lock_check_ = tick_start + kLockCheckMicroseconds;
    // A launch lock whose file was deleted tells nobody anything: it is taken again at once.
    if (launched_signal && !launched_signal->named()) launched_signal = nullptr;
    keep_receiver_lock();
  }
  if (!launched_signal) launched_signal = lock_file::make(launch_key, log_file::make_null());
  auto probe = lock_file::make(stay_alive_key, log_file::make_null());
  if (probe) platform::Quit(0);
  // The tick is not cut short by Quit; the probe goes, and with it the lock, as the tick ends.
  // Armed before the read, a watch tells of every write that the read does not see.
  if (!probe) arm_watches(look_again);
  if (read_messages(tick_start) == 0) streaming_ = false;
  set_pace();
}

void qem_util::arm_watches(bool retry_failed) {
  if (watcher_ && !watcher_->Watching()) {
    // While the preferences folder can't be used the message step says why.
    try {
      watcher_->Watch(sock->channel_folder(), "data");
    } catch (const platform::Exception&) {
    }
  }
  // The stay-alive lock is waited on once the helper is up; before, every tick tries it.
  if (!stay_alive_watch_ || !launched_signal || stay_alive_watch_->Waiting()) return;
  if (stay_alive_watch_failed_ && !retry_failed) return;
  stay_alive_watch_failed_ =
      !stay_alive_watch_->Watch(platform::SpecialFolder::Temporary().Child(stay_alive_key));
}

void qem_util::stay_alive_seen(platform::LockWatch::Seen seen) {
  if (seen == platform::LockWatch::Seen::Failed) {
    // The file can't be waited on (the folder can't be written, a symbolic link stands there):
    // the short tick tries the lock as it always did, and the watch again once a second.
    stay_alive_watch_failed_ = true;
    set_pace();
    return;
  }
  // Let go for a moment: the tick's own attempt says whether the helper may go, and when
  // somebody took the lock again, waits anew.
  ++steps_.stay_alive_seen;
  poll();
}

void qem_util::set_pace() {
  if (!timer_) return;
  // Messages taken and not yet handled, and a stream, are for the short tick: no watch tells
  // of them again.
  const bool watched = launched_signal && watcher_ && watcher_->Watching() && stay_alive_watch_ &&
                       stay_alive_watch_->Waiting() && !streaming_ && taken.empty();
  const int period = watched ? pace_.safety_net_ms : pace_.tick_ms;
  if (timer_->Period() != period) timer_->Period(period);
}
