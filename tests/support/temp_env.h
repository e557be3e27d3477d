#pragma once
// A fixture that gives each test its own private folders (see PrivateFolders), so that tests
// never meet each other's locks or channels, also under `ctest -j`. The folders come before
// anything of the test's own and go after it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/private_folders.h"

namespace qem_test {

class TempEnvTest : public ::testing::Test, public PrivateFolders {};

// The whole content of a file, or "<missing>" when it can't be read.
std::string ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const std::string& content);

}  // namespace qem_test
