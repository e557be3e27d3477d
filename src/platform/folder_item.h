#pragma once
// FolderItem: a path on disk that may or may not exist yet. Paths are worked out, never cached
// by the callers; every query goes to the file system afresh.

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

class TextOutputStream;
class TextInputStream;

class FolderItem {
 public:
  FolderItem() = default;
  explicit FolderItem(std::filesystem::path path) : path_(std::move(path)) {}

  // The item for a path in the platform's native form, as a user types it. Throws
  // UnsupportedFormatException when the text is no such path: empty, relative, or holding a NUL.
  static FolderItem FromNativePath(std::string_view path);

  // An item for the child `name` of this folder, whether or not it exists; the name is used as
  // one path component, as given.
  FolderItem Child(std::string_view name) const;
  // The full path and the last path component.
  std::string NativePath() const { return path_.string(); }
  std::string Name() const { return path_.filename().string(); }
  const std::filesystem::path& Path() const noexcept { return path_; }

  // True when something is on disk under this path (a dangling symbolic link counts).
  bool Exists() const;
  bool IsFolder() const;
  // Creates the folder (mode 0777 less the umask); throws IOException naming the path on failure.
  void CreateFolder() const;
  // Removes the file or empty folder; gives no word on failure.
  void Delete() const noexcept;

  // A stream that appends to the file, creating it if missing; nil when it can't be opened.
  std::shared_ptr<TextOutputStream> AppendToTextFile() const;
  // A stream on the existing file; nil when it can't be opened.
  std::shared_ptr<TextInputStream> OpenAsTextFile() const;

 private:
  std::filesystem::path path_;
};

namespace SpecialFolder {
// The temporary folder: TMPDIR, else /tmp. Throws IOException if none can be found.
FolderItem Temporary();
// The user's preferences folder: $HOME/Library/Preferences on macOS, elsewhere $XDG_CONFIG_HOME,
// else $HOME/.config. Created (mode 0700) when missing. Throws NilObjectException when no
// home can be found and IOException when the folder can't be made.
FolderItem Preferences();
}  // namespace SpecialFolder

}  // namespace platform
