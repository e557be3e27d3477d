#pragma once
// Text streams over a file descriptor. Writes go straight to the file with no buffer of our own,
// so a record written in one Write call reaches the file in one append. The stream closes its
// file when its last reference goes.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/folder_item.h"

namespace platform {

class TextOutputStream {
 public:
  // Opens the file for appending, creating it if missing (its mode and the handling of a
  // symbolic link follow `access`). Throws IOException with the errno when that fails.
  static std::shared_ptr<TextOutputStream> Open(const FolderItem& file,
                                                Access access = Access::Shared);
  // The same, but gives nil instead of throwing, with errno telling why.
  static std::shared_ptr<TextOutputStream> Append(const FolderItem& file,
                                                  Access access = Access::Shared) noexcept;

  ~TextOutputStream();
  TextOutputStream(const TextOutputStream&) = delete;
  TextOutputStream& operator=(const TextOutputStream&) = delete;

  // Writes all bytes of text; throws IOException with the errno when the file reports an error.
  void Write(std::string_view text);
  // Writes all bytes of text or none: when the file reports an error part way (a full disk, a
  // quota, a size limit), the file is cut back to the length it had before, then IOException as
  // Write. For a file that nobody else writes to meanwhile: what another writer adds in between
  // would be cut away with it.
  void WriteWhole(std::string_view text);
  // Writes text and the line delimiter "\n" in one append.
  void WriteLine(std::string_view text);
  // Nothing is held back in memory, so this only reports a stream that has failed before.
  void Flush();
  int LastErrorCode() const noexcept { return last_error_; }
  // WhyNotOwn of the open file itself (fstat of the descriptor): what is judged is what is
  // written, whatever the path names meanwhile.
  std::optional<std::string> WhyNotOwn() const;

 private:
  explicit TextOutputStream(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
  int fd_;
  std::string path_;
  int last_error_ = 0;
};

class TextInputStream {
 public:
  // Opens an existing file for reading; nil when it can't be opened, with errno telling why.
  // With Access::Private a symbolic link is refused.
  static std::shared_ptr<TextInputStream> Open(const FolderItem& file,
                                               Access access = Access::Shared) noexcept;

  ~TextInputStream();
  TextInputStream(const TextInputStream&) = delete;
  TextInputStream& operator=(const TextInputStream&) = delete;

  // Everything from the current place to the end of the file, bytes unchanged.
  // Throws IOException with the errno on a read error.
  std::string ReadAll();
  void Close() noexcept;
  // WhyNotOwn of the open file itself, as for TextOutputStream.
  std::optional<std::string> WhyNotOwn() const;

 private:
  explicit TextInputStream(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
  int fd_;
  std::string path_;
};

// Why an open failed, in words, for an error message: the system's text, except for the error
// that a Private open gives on a symbolic link, which is named as such.
std::string OpenFailure(int error_number);

}  // namespace platform
