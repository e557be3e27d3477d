#include "platform/folder_item.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temp_env.h"

namespace {

using FolderItemTest = qem_test::TempEnvTest;

TEST_F(FolderItemTest, SpecialFoldersFollowTheEnvironment) {
  EXPECT_EQ(platform::SpecialFolder::Preferences().Path(), prefs());
  // The temporary folder is TMPDIR, else /tmp: the starting application never reads TMP.
  const std::string own = tmp().string(), gone = (root() / "gone").string();
  ::unsetenv("TMPDIR");
  ::setenv("TMP", own.c_str(), 1);  // not restored by the fixture: unset just below
  EXPECT_EQ(platform::SpecialFolder::Temporary().NativePath(), "/tmp");
  ::unsetenv("TMP");
  for (const char* tmpdir : {own.c_str(), "", gone.c_str()}) {
    ::setenv("TMPDIR", tmpdir, 1);
    EXPECT_EQ(platform::SpecialFolder::Temporary().NativePath(), *tmpdir ? tmpdir : "/tmp");
  }
  // Without XDG_CONFIG_HOME the preferences folder is made under HOME with mode 0700, and so is
  // every parent made for it.
  ::unsetenv("XDG_CONFIG_HOME");
  ::setenv("HOME", (root() / "new").c_str(), 1);
  EXPECT_EQ(platform::SpecialFolder::Preferences().Path(), root() / "new" / ".config");
  for (auto path : {root() / "new", root() / "new" / ".config"}) {
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms::owner_all);
  }
}

}  // namespace
