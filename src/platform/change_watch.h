#pragma once
// ChangeWatch: tells a reader, without polling, that a file in one folder was made or written to,
// so that it can sleep until there is something to read. Linux: inotify on the folder, which also
// tells of writes to the files in it; macOS: kqueue on the folder and on the file; elsewhere
// nothing is told and the reader keeps to its own pace. It is only ever a hint: a change may be
// told late, more than once, or together with others, and the reader must still look for itself.
// One thread at a time.

#include <string>

#include "platform/folder_item.h"

namespace platform {

class ChangeWatch {
 public:
  // Watches nothing yet. Never throws; a platform that can't watch gives Descriptor() -1.
  ChangeWatch();
  ~ChangeWatch();
  ChangeWatch(const ChangeWatch&) = delete;
  ChangeWatch& operator=(const ChangeWatch&) = delete;

  // Watches the file `name` in `folder` from now on, instead of anything watched before: its
  // making or moving in, and every write to it, told once the writer has closed it (on Linux)
  // or as it grows (on macOS). False, and nothing watched, when the folder is missing or can't
  // be watched. Never blocks.
  bool Watch(const FolderItem& folder, const std::string& name);
  // True while watching. Turns false once Drain has seen the folder go away or be moved; Watch
  // it again once it is back.
  bool Watching() const noexcept;

  // A descriptor that polls readable while a change waits to be drained, for a caller that waits
  // on many things at once; -1 when the platform tells nothing.
  int Descriptor() const noexcept { return fd_; }
  // Takes every change that waits, never blocking. True when one of them concerns the watched
  // file, or when the folder went away (which a reader may want to look at too).
  bool Drain();
  // Blocks up to `milliseconds` until Drain would give true, and drains. True when a change was
  // told. Without a descriptor it sleeps the whole time and gives false.
  bool Wait(int milliseconds);

 private:
#ifdef __APPLE__
  // kqueue watches open files: the file is opened again whenever it was deleted or renamed.
  void ArmFile();
  int folder_fd_ = -1;
  int file_fd_ = -1;
  FolderItem folder_;
#else
  int watch_ = -1;
#endif
  int fd_ = -1;
  std::string name_;
};

}  // namespace platform
