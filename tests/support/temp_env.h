#pragma once
// A fixture that gives each test its own private folders (see PrivateFolders), so that tests
// never meet each other's locks or channels, also under `ctest -j`.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/private_folders.h"

namespace qem_test {

class TempEnvTest : public ::testing::Test {
 protected:
  void SetUp() override { folders_ = std::make_unique<PrivateFolders>(); }
  void TearDown() override { folders_.reset(); }

  // The test's own folder, and within it the temporary, preferences and runtime folders.
  const std::filesystem::path& root() const { return folders_->root(); }
  std::filesystem::path tmp() const { return folders_->tmp(); }
  std::filesystem::path prefs() const { return folders_->prefs(); }
  std::filesystem::path runtime() const { return folders_->runtime(); }

 private:
  std::unique_ptr<PrivateFolders> folders_;
};

// The whole content of a file, or "<missing>" when it can't be read.
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

}  // namespace qem_test
