#include "app/folder_check.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_env.h"

namespace {

using FolderCheck = qem_test::TempEnvTest;

TEST_F(FolderCheck, RefusesAFolderThatIsMissingOrNoFolderAndNamesIt) {
  qem_test::WriteFile(root() / "plain", "x");
  const std::string own = tmp().string(), gone = (root() / "gone").string(),
                    plain = (root() / "plain").string(),
                    under_file = (root() / "plain" / "c").string(),
                    not_yet = (root() / "new" / "config").string();
  const struct {
    const char* name;
    const char* variable;
    const char* value;
    const char* named;  // what the refusal must name; nullptr: no refusal
  } rows[] = {
      {"both folders there", "TMPDIR", own.c_str(), nullptr},
      {"preferences folder still to be made", "XDG_CONFIG_HOME", not_yet.c_str(), nullptr},
      {"temporary folder gone", "TMPDIR", gone.c_str(), gone.c_str()},
      {"temporary folder is a file", "TMPDIR", plain.c_str(), plain.c_str()},
      {"preferences folder is a file", "XDG_CONFIG_HOME", plain.c_str(), plain.c_str()},
      {"preferences folder under a file", "XDG_CONFIG_HOME", under_file.c_str(),
       under_file.c_str()},
  };
  for (const auto& row : rows) {
    qem_test::ScopedEnv changed(row.variable, row.value);
    auto refusal = folder_check::refusal();
    ASSERT_EQ(refusal.has_value(), row.named != nullptr)
        << row.name << ": " << refusal.value_or("");
    if (!refusal) continue;
    EXPECT_NE(refusal->find(row.named), std::string::npos) << row.name << ": " << *refusal;
    EXPECT_EQ(refusal->find('\n'), std::string::npos) << row.name;
  }
  EXPECT_FALSE(std::filesystem::exists(root() / "new")) << "the check made a folder";
  EXPECT_FALSE(std::filesystem::exists(gone));
}

}  // namespace
