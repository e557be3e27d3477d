#pragma once
// FolderWatcher: tells the main thread, through the run loop, that a file in one folder was made
// or written to. Over ChangeWatch where the platform tells of writes (Linux, macOS); elsewhere
// over Qt's file system watcher, on the folder and, while it exists, on the file itself (a folder
// alone would not tell of a file that only grows). A hint only, as ChangeWatch says.

#include <functional>
#include <memory>
#include <string>

#include "platform/change_watch.h"
#include "platform/folder_item.h"

class QFileSystemWatcher;
class QSocketNotifier;

namespace platform {

class FolderWatcher {
 public:
  // Watches nothing yet.
  FolderWatcher();
  ~FolderWatcher();
  FolderWatcher(const FolderWatcher&) = delete;
  FolderWatcher& operator=(const FolderWatcher&) = delete;

  // Watches the file `name` in `folder` from now on, instead of anything watched before. False,
  // and nothing watched, when the folder is missing or the platform can't watch it. Never
  // blocks.
  bool Watch(const FolderItem& folder, const std::string& name);
  // True while watching. Turns false when the watched folder goes away; Watch it again once it
  // is back.
  bool Watching() const;

  // The handler of the Changed event: the file was made or written to, or the folder went. It
  // runs from the run loop through the event guard, after the change and never inside a call
  // into this object; changes that come close together may be told once.
  void AddChangedHandler(std::function<void(FolderWatcher&)> handler);

 private:
  void Tell();
  // The Qt watcher's view: the folder, and the file while it exists.
  void WatchFile();

  ChangeWatch core_;
  std::unique_ptr<QSocketNotifier> notifier_;
  std::unique_ptr<QFileSystemWatcher> qt_;
  FolderItem folder_;
  std::string name_;
  std::function<void(FolderWatcher&)> changed_;
};

}  // namespace platform
