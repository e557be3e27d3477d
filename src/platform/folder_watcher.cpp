#include "platform/folder_watcher.h"

#include <QFileSystemWatcher>
#include <QSocketNotifier>
#include <QString>

#include "platform/event_guard.h"

namespace platform {

FolderWatcher::FolderWatcher() {
  if (core_.Descriptor() >= 0) {
    notifier_ = std::make_unique<QSocketNotifier>(core_.Descriptor(), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] {
      if (core_.Drain()) Tell();
    });
    return;
  }
  qt_ = std::make_unique<QFileSystemWatcher>();
  QObject::connect(qt_.get(), &QFileSystemWatcher::directoryChanged, [this] {
    WatchFile();
    Tell();
  });
  QObject::connect(qt_.get(), &QFileSystemWatcher::fileChanged, [this] {
    WatchFile();
    Tell();
  });
}

FolderWatcher::~FolderWatcher() = default;

bool FolderWatcher::Watch(const FolderItem& folder, const std::string& name) {
  folder_ = folder;
  name_ = name;
  if (!qt_) return core_.Watch(folder, name);
  const QStringList watched = qt_->files() + qt_->directories();
  if (!watched.isEmpty()) qt_->removePaths(watched);
  // Asked only of a folder that is there: Qt warns on stderr about a missing one.
  if (!folder.IsFolder() || !qt_->addPath(QString::fromStdString(folder.NativePath()))) {
    return false;
  }
  WatchFile();
  return true;
}

void FolderWatcher::WatchFile() {
  const FolderItem file = folder_.Child(name_);
  const QString path = QString::fromStdString(file.NativePath());
  // A file that was deleted has left the watch by itself; the one made anew is added again.
  if (Watching() && !qt_->files().contains(path) && file.Exists()) qt_->addPath(path);
}

bool FolderWatcher::Watching() const {
  return qt_ ? !qt_->directories().isEmpty() : core_.Watching();
}

void FolderWatcher::AddChangedHandler(std::function<void(FolderWatcher&)> handler) {
  changed_ = std::move(handler);
}

void FolderWatcher::Tell() {
  if (changed_) GuardEvent([this] { changed_(*this); });
}

}  // namespace platform
