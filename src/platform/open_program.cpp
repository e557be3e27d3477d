#include "platform/open_program.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <QProcess>
#include <QStringList>

#include "platform/exceptions.h"

namespace platform {

void OpenProgram(const FolderItem& program, const std::string& parameters) {
  const std::string path = program.NativePath();
  auto refuse = [&](const std::string& why, int error) {
    throw IOException("Cannot start " + path + ": " + why, error);
  };
  if (program.IsFolder()) refuse("it is a folder", EISDIR);
  if (::access(path.c_str(), X_OK) != 0) {
    const int error = errno;
    refuse(std::strerror(error), error);
  }
  QStringList arguments;
  if (!parameters.empty()) {
    arguments =
        QString::fromUtf8(parameters.data(), std::ssize(parameters)).split(QLatin1Char(' '));
  }
  if (!QProcess::startDetached(QString::fromStdString(path), arguments)) {
    refuse("the program could not be started", 0);
  }
}

}  // namespace platform
