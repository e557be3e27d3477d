#include "app/folder_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "platform/exceptions.h"
#include "platform/folder_item.h"

namespace folder_check {

namespace {

// Why `path` can't be used as a folder to write in, or nullopt when it can. With `may_be_made`,
// a missing folder is fine when the nearest folder above it that exists can be written in.
std::optional<std::string> Unusable(const std::filesystem::path& path, bool may_be_made) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) {
    int error = errno;
    bool has_parent = path.has_parent_path() && path.parent_path() != path;
    if (error == ENOENT && may_be_made && has_parent) return Unusable(path.parent_path(), true);
    return std::strerror(error);
  }
  if (!S_ISDIR(st.st_mode)) return "it is no folder";
  if (::access(path.c_str(), W_OK | X_OK) != 0) return std::strerror(errno);
  return std::nullopt;
}

std::string Line(const char* which, const std::string& path, const std::string& why) {
  return std::string("qem_util: the ") + which + " folder " + path + " can't be used: " + why;
}

}  // namespace

std::optional<std::string> refusal() {
  auto temporary = platform::SpecialFolder::Temporary();
  if (auto why = Unusable(temporary.Path(), false)) {
    return Line("temporary", temporary.NativePath(), *why);
  }
  platform::FolderItem preferences;
  try {
    preferences = platform::SpecialFolder::PreferencesLocation();
  } catch (const platform::Exception& error) {
    return std::string("qem_util: no preferences folder: ") + error.what();
  }
  if (auto why = Unusable(preferences.Path(), true)) {
    return Line("preferences", preferences.NativePath(), *why);
  }
  return std::nullopt;
}

}  // namespace folder_check
