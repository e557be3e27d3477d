#pragma once
// FolderItem: a path on disk that may or may not exist yet. Paths are worked out, never cached
// by the callers; every query goes to the file system afresh.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct stat;

namespace platform {

class TextOutputStream;
class TextInputStream;

// Who may use what is made or opened through a FolderItem. Shared: folders 0777 and files 0666,
// less the umask, and symbolic links are followed. Private: the user alone (folders 0700, files
// 0600), and a symbolic link in the last path component is refused (the open fails with ELOOP),
// so nothing is ever read or written through one planted there.
enum class Access { Shared, Private };

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
  // Why what lies under this path may not hold what is private to the user (see WhyNotOwn); it
  // is looked at with lstat, so a symbolic link is seen as one and never followed. nullopt when
  // nothing is there.
  std::optional<std::string> WhyNotOwn() const;
  bool IsFolder() const;
  // Creates the folder (see Access for its mode); throws IOException naming the path on failure.
  void CreateFolder(Access access = Access::Shared) const;
  // Removes the file or empty folder; gives no word on failure.
  void Delete() const noexcept;

  // A stream that appends to the file, creating it if missing; nil when it can't be opened, with
  // errno telling why.
  std::shared_ptr<TextOutputStream> AppendToTextFile(Access access = Access::Shared) const;
  // A stream on the existing file; nil when it can't be opened, with errno telling why.
  std::shared_ptr<TextInputStream> OpenAsTextFile(Access access = Access::Shared) const;

 private:
  std::filesystem::path path_;
};

// Why a file or folder with this status may not hold what is private to the user, in words for
// a message ("it belongs to another user (uid 1001)", "group or others may write to it (mode
// 0777)", "it is a symbolic link"), or nullopt when it is the user's own and nobody else may
// change it. Group or others reading is no reason: a peer's umask may leave a folder 0755.
std::optional<std::string> WhyNotOwn(const struct ::stat& status);

namespace SpecialFolder {
// The temporary folder: $TMPDIR when set and not empty, else /tmp, and nothing else: the
// starting application looks there for the locks named by bare strings. Whether it exists is
// not checked here; never throws.
FolderItem Temporary();
// Where the user's preferences folder is: $HOME/Library/Preferences on macOS, elsewhere
// $XDG_CONFIG_HOME (when absolute), else $HOME/.config. Makes nothing. Throws
// NilObjectException when no home can be found.
FolderItem PreferencesLocation();
// The preferences folder, made when missing: it and every parent made for it get mode 0700.
// Throws NilObjectException when no home can be found and IOException naming the folder when it
// can't be made.
FolderItem Preferences();
}  // namespace SpecialFolder

}  // namespace platform
