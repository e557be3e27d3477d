#include "app/folder_check.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "support/temp_env.h"

namespace {

using FolderCheck = qem_test::TempEnvTest;

TEST_F(FolderCheck, RefusesAFolderThatIsMissingOrNoFolderAndNamesIt) {
  qem_test::WriteFile(root() / "plain", "x");
  const std::string own = tmp().string(), gone = (root() / "gone").string(),
                    plain = (root() / "plain").string(), under = plain + "/c",
                    to_be_made = (root() / "new" / "config").string();
  const struct {
    const char* variable;
    const std::string& value;
    bool refused;
  } rows[] = {
      {"TMPDIR", own, false},
      {"XDG_CONFIG_HOME", to_be_made, false},  // made when first needed, not by the check
      {"TMPDIR", gone, true},
      {"TMPDIR", plain, true},
      {"XDG_CONFIG_HOME", plain, true},
      {"XDG_CONFIG_HOME", under, true},
  };
  for (const auto& row : rows) {
    ::setenv("TMPDIR", own.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", prefs().c_str(), 1);
    ::setenv(row.variable, row.value.c_str(), 1);
    auto refusal = folder_check::refusal();
    ASSERT_EQ(refusal.has_value(), row.refused) << row.value << ": " << refusal.value_or("");
    if (!refusal) continue;
    EXPECT_NE(refusal->find(row.value + " "), std::string::npos) << *refusal;
  }
  EXPECT_FALSE(std::filesystem::exists(root() / "new"));
}

}  // namespace
