#pragma once
// LockWatch: tells, without polling, that the advisory lock that somebody else holds on a file
// was let go, or that its holder died. A thread of its own waits for the lock (the BSD lock that
// the lock files take) on a descriptor of its own; the moment it has it, it lets go again, never
// deleting the file, and makes Descriptor() readable. That is a notice, not a verdict: the lock
// was free for a moment and may be taken again by now, so who reads the notice makes its own
// attempt. The thread holds the lock for no longer than it takes to let go. The owner calls
// every operation from one thread.

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "platform/folder_item.h"

namespace platform {

class LockWatch {
 public:
  // What the waiting thread saw since the last Drain.
  enum class Seen {
    Nothing,
    // The lock was had for a moment and let go again.
    Free,
    // The file can't be opened or locked at all (Error tells why); nothing is waited for.
    Failed,
  };

  // Waits for nothing yet; makes the descriptor, and no thread. Never throws.
  LockWatch();
  // Stops the thread, interrupting a wait in progress, and waits for it to end (a moment).
  ~LockWatch();
  LockWatch(const LockWatch&) = delete;
  LockWatch& operator=(const LockWatch&) = delete;

  // From now on waits for the lock of `file` to be free, on the watch's thread, which is started
  // the first time; the file is made when missing, as any attempt at the lock makes it. One wait
  // per call: after a notice, call again to wait again. Does nothing while a wait is under way.
  // False when the thread or the descriptor can't be had. Never blocks.
  bool Watch(const FolderItem& file);
  // True from Watch until the thread tells what it saw.
  bool Waiting() const;

  // Readable while a notice waits to be drained; -1 when it could not be made.
  int Descriptor() const noexcept { return pipe_[0]; }
  // Takes the notice, never blocking.
  Seen Drain();
  // The errno of the last Failed.
  int Error() const;

 private:
  void Run();

  int pipe_[2] = {-1, -1};
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::thread thread_;
  // Guarded by mutex_.
  std::string path_;
  bool armed_ = false;
  bool stop_ = false;
  bool in_wait_ = false;
  bool finished_ = false;
  Seen seen_ = Seen::Nothing;
  int error_ = 0;
};

}  // namespace platform
