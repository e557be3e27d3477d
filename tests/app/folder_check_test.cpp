#include "app/folder_check.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_env.h"

namespace {

using FolderCheck = qem_test::TempEnvTest;

TEST_F(FolderCheck, RefusesAFolderThatIsMissingOrNoFolderAndNamesIt) {
  qem_test::WriteFile(root() / "plain", "x");
  const std::string plain = (root() / "plain").string();
  const struct {
    const char* variable;
    std::string value;
    bool refused;
  } rows[] = {
      {"TMPDIR", tmp().string(), false},
      {"XDG_CONFIG_HOME", (root() / "new" / "config").string(), false},  // made when needed
      {"TMPDIR", (root() / "gone").string(), true},
      {"TMPDIR", plain, true},
      {"XDG_CONFIG_HOME", plain, true},
      {"XDG_CONFIG_HOME", plain + "/c", true},
  };
  for (const auto& row : rows) {
    qem_test::ScopedEnv changed(row.variable, row.value.c_str());
    auto refusal = folder_check::refusal();
    ASSERT_EQ(refusal.has_value(), row.refused) << row.value << ": " << refusal.value_or("");
    EXPECT_TRUE(!refusal || refusal->find(row.value + " ") != std::string::npos) << *refusal;
  }
  EXPECT_FALSE(std::filesystem::exists(root() / "new")) << "made by the check";
}

}  // namespace
