#pragma once
// A private folder for a benchmark run: HOME, XDG_CONFIG_HOME and TMPDIR point into it, so
// figures never meet a real channel or lock. Removed again at the end of the run.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace qem_bench {

class PrivateFolders {
 public:
  PrivateFolders() {
    for (int i = 0; i < 3; ++i) {
      const char* value = std::getenv(kNames[i]);
      had_[i] = value != nullptr;
      if (value) saved_[i] = value;
    }
    std::string pattern = (std::filesystem::temp_directory_path() / "qem_bench.XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) std::abort();
    root_ = pattern;
    std::filesystem::create_directories(root_ / "tmp");
    std::filesystem::create_directories(root_ / "config");
    ::setenv("HOME", root_.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root_ / "config").c_str(), 1);
    ::setenv("TMPDIR", (root_ / "tmp").c_str(), 1);
  }
  ~PrivateFolders() {
    for (int i = 0; i < 3; ++i) {
      if (had_[i]) {
        ::setenv(kNames[i], saved_[i].c_str(), 1);
      } else {
        ::unsetenv(kNames[i]);
      }
    }
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  PrivateFolders(const PrivateFolders&) = delete;
  PrivateFolders& operator=(const PrivateFolders&) = delete;
  const std::filesystem::path& root() const { return root_; }

 private:
  static constexpr const char* kNames[3] = {"HOME", "XDG_CONFIG_HOME", "TMPDIR"};
  std::filesystem::path root_;
  std::string saved_[3];
  bool had_[3] = {false, false, false};
};

}  // namespace qem_bench
