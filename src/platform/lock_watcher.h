#pragma once
// LockWatcher: tells the main thread, through the run loop, that the advisory lock somebody else
// held on a file was let go or its holder died (LockWatch, whose thread does the waiting).

#include <functional>
#include <memory>

#include "platform/folder_item.h"
#include "platform/lock_watch.h"

class QSocketNotifier;

namespace platform {

class LockWatcher {
 public:
  // Waits for nothing yet.
  LockWatcher();
  // Stops the waiting thread (see LockWatch).
  ~LockWatcher();
  LockWatcher(const LockWatcher&) = delete;
  LockWatcher& operator=(const LockWatcher&) = delete;

  // Waits once for the lock of `file` to be free, as LockWatch::Watch does. False when it can't.
  bool Watch(const FolderItem& file);
  // True from Watch until what the wait saw is told.
  bool Waiting() const { return core_.Waiting(); }
  // The errno of a wait that failed.
  int Error() const { return core_.Error(); }

  // The handler of the Seen event: Free when the lock was free for a moment, Failed when the file
  // can't be opened or locked. It runs from the run loop through the event guard, never inside a
  // call into this object; nothing is waited for after it until Watch is called again.
  void AddSeenHandler(std::function<void(LockWatch::Seen)> handler);

 private:
  LockWatch core_;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::function<void(LockWatch::Seen)> seen_;
};

}  // namespace platform
