#pragma once
// A fixture that gives each test its own folder and points HOME, XDG_CONFIG_HOME and TMPDIR into
// it, so that tests never meet each other's locks or channels, also under `ctest -j`.
// XDG_RUNTIME_DIR points there too, so that Qt in a child process keeps its runtime folder out
// of the temporary folder that the test watches.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace qem_test {

class TempEnvTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // The test's own folder, and within it the temporary and the preferences folders.
  const std::filesystem::path& root() const { return root_; }
  std::filesystem::path tmp() const { return root_ / "tmp"; }
  std::filesystem::path prefs() const { return root_ / "config"; }
  std::filesystem::path runtime() const { return root_ / "runtime"; }

 private:
  std::filesystem::path root_;
  std::string saved_home_, saved_config_, saved_tmpdir_, saved_runtime_;
  bool had_home_ = false, had_config_ = false, had_tmpdir_ = false, had_runtime_ = false;
};

// The whole content of a file, or "<missing>" when it can't be read.
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

}  // namespace qem_test
