#include "platform/system.h"

#include <unistd.h>

#include <filesystem>
#include <string_view>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

namespace platform {

std::int32_t my_process_id() {
  return static_cast<std::int32_t>(::getpid());
}

}  // namespace platform

namespace platform::System {

namespace {
std::string& Stored() {
  static std::string command_line;
  return command_line;
}
}  // namespace

void SetArguments(int argc, const char* const* argv) {
  std::string joined;
  for (int i = 0; i < argc; ++i) {
    if (i > 0) joined.push_back(' ');
    joined.append(argv[i]);
  }
  Stored() = std::move(joined);
}

const std::string& CommandLine() {
  return Stored();
}

std::string ExecutablePath() {
#ifdef __APPLE__
  char buffer[4096];
  uint32_t size = sizeof buffer;
  if (_NSGetExecutablePath(buffer, &size) == 0) {
    std::error_code error;
    auto real = std::filesystem::canonical(buffer, error);
    return error ? std::string(buffer) : real.string();
  }
#else
  std::error_code error;
  auto path = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) return path.string();
#endif
  return "";
}

std::string ExecutableName() {
  const std::string path = ExecutablePath();
  if (path.empty()) return "qem_util";
  return std::filesystem::path(path).filename().string();
}

}  // namespace platform::System
