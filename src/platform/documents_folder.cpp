#include "platform/documents_folder.h"

#include <QDir>
#include <QStandardPaths>

namespace platform::SpecialFolder {

FolderItem Documents() {
  QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  if (path.isEmpty()) path = QDir::homePath();
  return FolderItem(std::filesystem::path(path.toStdString()));
}

}  // namespace platform::SpecialFolder
