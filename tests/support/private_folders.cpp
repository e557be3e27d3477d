#include "support/private_folders.h"

#include <stdlib.h>

#include <cstdlib>

namespace qem_test {

PrivateFolders::PrivateFolders() {
  for (int i = 0; i < kCount; ++i) {
    const char* value = std::getenv(kNames[i]);
    had_[i] = value != nullptr;
    if (value) saved_[i] = value;
  }
  std::string pattern = (std::filesystem::temp_directory_path() / "qem_test.XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) std::abort();
  root_ = pattern;
  std::filesystem::create_directories(tmp());
  std::filesystem::create_directories(prefs());
  std::filesystem::create_directories(runtime());
  std::filesystem::permissions(runtime(), std::filesystem::perms::owner_all);
  const std::filesystem::path values[kCount] = {root_, prefs(), tmp(), runtime()};
  for (int i = 0; i < kCount; ++i) ::setenv(kNames[i], values[i].c_str(), 1);
}

PrivateFolders::~PrivateFolders() {
  for (int i = 0; i < kCount; ++i) {
    if (had_[i]) {
      ::setenv(kNames[i], saved_[i].c_str(), 1);
    } else {
      ::unsetenv(kNames[i]);
    }
  }
  std::error_code ignored;
  // A test may have taken permissions away inside; give them back so everything goes.
  std::filesystem::permissions(root_, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ignored);
  std::filesystem::remove_all(root_, ignored);
}

}  // namespace qem_test
