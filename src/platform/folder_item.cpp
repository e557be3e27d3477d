#include "platform/folder_item.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/exceptions.h"
#include "platform/text_stream.h"

namespace platform {

FolderItem FolderItem::FromNativePath(std::string_view path) {
  if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) {
    throw UnsupportedFormatException("Not a full path: \"" + std::string(path) + "\"");
  }
  return FolderItem(std::filesystem::path(std::string(path)));
}

FolderItem FolderItem::Child(std::string_view name) const {
  return FolderItem(path_ / std::filesystem::path(std::string(name)));
}

bool FolderItem::Exists() const {
  struct stat st;
  return ::lstat(path_.c_str(), &st) == 0;
}

bool FolderItem::IsFolder() const {
  struct stat st;
  return ::stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void FolderItem::CreateFolder() const {
  if (::mkdir(path_.c_str(), 0777) != 0) {
    int error = errno;
    throw IOException("Cannot create folder " + NativePath() + ": " + std::strerror(error), error);
  }
}

void FolderItem::Delete() const noexcept {
  if (::unlink(path_.c_str()) != 0 && errno == EISDIR) ::rmdir(path_.c_str());
#ifdef __APPLE__
  // macOS reports EPERM, not EISDIR, for unlink on a folder.
  if (errno == EPERM) ::rmdir(path_.c_str());
#endif
}

std::shared_ptr<TextOutputStream> FolderItem::AppendToTextFile() const {
  return TextOutputStream::Append(*this);
}

std::shared_ptr<TextInputStream> FolderItem::OpenAsTextFile() const {
  return TextInputStream::Open(*this);
}

namespace SpecialFolder {

FolderItem Temporary() {
  std::error_code error;
  auto path = std::filesystem::temp_directory_path(error);
  if (error) throw IOException("No temporary folder: " + error.message(), error.value());
  return FolderItem(path);
}

FolderItem Preferences() {
  std::filesystem::path path;
  const char* home = std::getenv("HOME");
#ifdef __APPLE__
  if (!home || !*home) throw NilObjectException("No home folder for the preferences folder");
  path = std::filesystem::path(home) / "Library" / "Preferences";
#else
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config && *config == '/') {
    path = config;
  } else {
    if (!home || !*home) throw NilObjectException("No home folder for the preferences folder");
    path = std::filesystem::path(home) / ".config";
  }
#endif
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) {
    std::error_code ignored;
    std::filesystem::create_directories(path.parent_path(), ignored);
    if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
      int error = errno;
      throw IOException(
          "Cannot create preferences folder " + path.string() + ": " + std::strerror(error), error);
    }
  }
  return FolderItem(path);
}

}  // namespace SpecialFolder
}  // namespace platform
