#include "support/private_folders.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace qem_test {

PrivateFolders::PrivateFolders() {
  std::string pattern = (std::filesystem::temp_directory_path() / "qem_test.XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) std::abort();
  root_ = pattern;
  for (const auto& folder : {tmp(), prefs(), runtime()}) {
    std::filesystem::create_directories(folder);
  }
  std::filesystem::permissions(runtime(), std::filesystem::perms::owner_all);
  const std::pair<const char*, std::filesystem::path> values[] = {{"HOME", root_},
                                                                  {"XDG_CONFIG_HOME", prefs()},
                                                                  {"TMPDIR", tmp()},
                                                                  {"XDG_RUNTIME_DIR", runtime()}};
  for (const auto& [name, path] : values) {
    environment_.push_back(std::make_unique<ScopedEnv>(name, path.c_str()));
  }
}

PrivateFolders::~PrivateFolders() {
  environment_.clear();
  std::error_code ignored;
  // A test may have taken permissions away inside; give them back so everything goes.
  std::filesystem::permissions(root_, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ignored);
  std::filesystem::remove_all(root_, ignored);
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

void WriteFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

}  // namespace qem_test
