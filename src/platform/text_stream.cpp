#include "platform/text_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/exceptions.h"

namespace platform {

namespace {
int OpenForAppend(const FolderItem& file, Access access) {
  const bool mine = access == Access::Private;
  return ::open(file.NativePath().c_str(),
                O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | (mine ? O_NOFOLLOW : 0),
                mine ? 0600 : 0666);
}
std::string Describe(const std::string& what, const std::string& path, int error) {
  return what + " " + path + ": " + std::strerror(error);
}
std::optional<std::string> WhyDescriptorNotOwn(int fd, const std::string& path) {
  struct stat st;
  if (::fstat(fd, &st) != 0) return Describe("cannot look at", path, errno);
  return WhyNotOwn(st);
}
}  // namespace

std::string OpenFailure(int error_number) {
  if (error_number == ELOOP) return "it is a symbolic link, which is refused";
  return std::strerror(error_number);
}

std::shared_ptr<TextOutputStream> TextOutputStream::Open(const FolderItem& file, Access access) {
  int fd = OpenForAppend(file, access);
  if (fd < 0) {
    int error = errno;
    throw IOException("Cannot open " + file.NativePath() + ": " + OpenFailure(error), error);
  }
  return std::shared_ptr<TextOutputStream>(new TextOutputStream(fd, file.NativePath()));
}

std::shared_ptr<TextOutputStream> TextOutputStream::Append(const FolderItem& file,
                                                           Access access) noexcept {
  int fd = OpenForAppend(file, access);
  if (fd < 0) return nullptr;
  return std::shared_ptr<TextOutputStream>(new TextOutputStream(fd, file.NativePath()));
}

TextOutputStream::~TextOutputStream() {
  ::close(fd_);
}

void TextOutputStream::Write(std::string_view text) {
  while (!text.empty()) {
    ssize_t n = ::write(fd_, text.data(), text.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      last_error_ = errno;
      throw IOException(Describe("Cannot write to", path_, last_error_), last_error_);
    }
    text.remove_prefix(static_cast<std::size_t>(n));
  }
}

void TextOutputStream::WriteWhole(std::string_view text) {
  struct stat before;
  if (::fstat(fd_, &before) != 0) {
    last_error_ = errno;
    throw IOException(Describe("Cannot look at", path_, last_error_), last_error_);
  }
  try {
    Write(text);
  } catch (const IOException& error) {
    if (::ftruncate(fd_, before.st_size) == 0) throw;
    throw IOException(
        std::string(error.what()) + "; " + Describe("and cannot cut back", path_, errno),
        error.ErrorNumber());
  }
}

std::optional<std::string> TextOutputStream::WhyNotOwn() const {
  return WhyDescriptorNotOwn(fd_, path_);
}

void TextOutputStream::WriteLine(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 1);
  line.append(text);
  line.push_back('\n');
  Write(line);
}

void TextOutputStream::Flush() {
  if (last_error_ != 0) {
    throw IOException(Describe("Cannot write to", path_, last_error_), last_error_);
  }
}

std::shared_ptr<TextInputStream> TextInputStream::Open(const FolderItem& file,
                                                       Access access) noexcept {
  int fd = ::open(file.NativePath().c_str(),
                  O_RDONLY | O_CLOEXEC | (access == Access::Private ? O_NOFOLLOW : 0));
  if (fd < 0) return nullptr;
  return std::shared_ptr<TextInputStream>(new TextInputStream(fd, file.NativePath()));
}

TextInputStream::~TextInputStream() {
  Close();
}

std::string TextInputStream::ReadAll() {
  if (fd_ < 0) throw IOException("Stream is closed: " + path_, EBADF);
  std::string result;
  char chunk[65536];
  for (;;) {
    ssize_t n = ::read(fd_, chunk, sizeof chunk);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      int error = errno;
      throw IOException(Describe("Cannot read", path_, error), error);
    }
    result.append(chunk, static_cast<std::size_t>(n));
  }
  return result;
}

std::optional<std::string> TextInputStream::WhyNotOwn() const {
  return WhyDescriptorNotOwn(fd_, path_);
}

void TextInputStream::Close() noexcept {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

}  // namespace platform
