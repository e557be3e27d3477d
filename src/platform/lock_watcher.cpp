#include "platform/lock_watcher.h"

#include <QSocketNotifier>

#include "platform/event_guard.h"

namespace platform {

LockWatcher::LockWatcher() {
  if (core_.Descriptor() < 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(core_.Descriptor(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] {
    const LockWatch::Seen seen = core_.Drain();
    if (seen != LockWatch::Seen::Nothing && seen_) GuardEvent([this, seen] { seen_(seen); });
  });
}

LockWatcher::~LockWatcher() = default;

bool LockWatcher::Watch(const FolderItem& file) {
  return notifier_ && core_.Watch(file);
}

void LockWatcher::AddSeenHandler(std::function<void(LockWatch::Seen)> handler) {
  seen_ = std::move(handler);
}

}  // namespace platform
