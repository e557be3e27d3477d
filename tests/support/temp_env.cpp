#include "support/temp_env.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qem_test {

namespace {
void Save(const char* name, std::string& value, bool& had) {
  const char* current = std::getenv(name);
  had = current != nullptr;
  if (had) value = current;
}
void Restore(const char* name, const std::string& value, bool had) {
  if (had) {
    ::setenv(name, value.c_str(), 1);
  } else {
    ::unsetenv(name);
  }
}
}  // namespace

void TempEnvTest::SetUp() {
  Save("HOME", saved_home_, had_home_);
  Save("XDG_CONFIG_HOME", saved_config_, had_config_);
  Save("TMPDIR", saved_tmpdir_, had_tmpdir_);
  Save("XDG_RUNTIME_DIR", saved_runtime_, had_runtime_);
  std::string pattern = (std::filesystem::temp_directory_path() / "qem_test.XXXXXX").string();
  ASSERT_NE(::mkdtemp(pattern.data()), nullptr) << "mkdtemp failed";
  root_ = pattern;
  std::filesystem::create_directories(tmp());
  std::filesystem::create_directories(prefs());
  std::filesystem::create_directories(runtime());
  std::filesystem::permissions(runtime(), std::filesystem::perms::owner_all);
  ::setenv("HOME", root_.c_str(), 1);
  ::setenv("XDG_CONFIG_HOME", prefs().c_str(), 1);
  ::setenv("TMPDIR", tmp().c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", runtime().c_str(), 1);
}

void TempEnvTest::TearDown() {
  Restore("HOME", saved_home_, had_home_);
  Restore("XDG_CONFIG_HOME", saved_config_, had_config_);
  Restore("TMPDIR", saved_tmpdir_, had_tmpdir_);
  Restore("XDG_RUNTIME_DIR", saved_runtime_, had_runtime_);
  if (!root_.empty()) {
    std::error_code ignored;
    std::filesystem::permissions(root_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(root_, ignored);
  }
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
