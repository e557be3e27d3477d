#include "platform/folder_item.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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

std::optional<std::string> FolderItem::WhyNotOwn() const {
  struct stat st;
  if (::lstat(path_.c_str(), &st) != 0) return std::nullopt;
  return platform::WhyNotOwn(st);
}

std::optional<std::string> WhyNotOwn(const struct stat& status) {
  if (S_ISLNK(status.st_mode)) return "it is a symbolic link";
  if (status.st_uid != ::geteuid()) {
    return "it belongs to another user (uid " + std::to_string(status.st_uid) + ")";
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    char mode[8];
    std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(status.st_mode & 07777));
    return std::string("group or others may write to it (mode ") + mode + ")";
  }
  return std::nullopt;
}

bool FolderItem::IsFolder() const {
  struct stat st;
  return ::stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void FolderItem::CreateFolder(Access access) const {
  if (::mkdir(path_.c_str(), access == Access::Private ? 0700 : 0777) != 0) {
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

std::shared_ptr<TextOutputStream> FolderItem::AppendToTextFile(Access access) const {
  return TextOutputStream::Append(*this, access);
}

std::shared_ptr<TextInputStream> FolderItem::OpenAsTextFile(Access access) const {
  return TextInputStream::Open(*this, access);
}

namespace SpecialFolder {

namespace {

// Makes `path` and whatever parents it lacks, each with mode 0700; a folder already there is
// left as it is. Throws IOException naming the folder that could not be made.
void MakePrivateFolders(const std::filesystem::path& path) {
  struct stat st;
  if (::stat(path.c_str(), &st) == 0) return;
  if (path.has_parent_path() && path.parent_path() != path) MakePrivateFolders(path.parent_path());
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    int error = errno;
    throw IOException(
        "Cannot create preferences folder " + path.string() + ": " + std::strerror(error), error);
  }
}

}  // namespace

FolderItem Temporary() {
  const char* folder = std::getenv("TMPDIR");
  return FolderItem(folder && *folder ? std::filesystem::path(folder) : "/tmp");
}

FolderItem PreferencesLocation() {
  const char* home = std::getenv("HOME");
#ifdef __APPLE__
  if (!home || !*home) throw NilObjectException("No home folder for the preferences folder");
  return FolderItem(std::filesystem::path(home) / "Library" / "Preferences");
#else
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config && *config == '/') return FolderItem(config);
  if (!home || !*home) throw NilObjectException("No home folder for the preferences folder");
  return FolderItem(std::filesystem::path(home) / ".config");
#endif
}

FolderItem Preferences() {
  FolderItem folder = PreferencesLocation();
  MakePrivateFolders(folder.Path());
  return folder;
}

}  // namespace SpecialFolder
}  // namespace platform
