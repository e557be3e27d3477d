#include "platform/folder_item.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/exceptions.h"
#include "platform/text_stream.h"
#include "support/temp_env.h"

namespace {

class FolderItemTest : public qem_test::TempEnvTest {};

TEST_F(FolderItemTest, SpecialFoldersFollowTheEnvironment) {
  EXPECT_EQ(platform::SpecialFolder::Preferences().Path(), prefs());
  // The temporary folder is TMPDIR, else /tmp: the starting application never reads TMP.
  const std::string own = tmp().string(), gone = (root() / "gone").string();
  ::unsetenv("TMPDIR");
  ::setenv("TMP", own.c_str(), 1);  // not restored by the fixture: unset at once below
  std::string found = platform::SpecialFolder::Temporary().NativePath();
  ::unsetenv("TMP");
  EXPECT_EQ(found, "/tmp");
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
    struct stat st;
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u) << path;
  }
}

TEST_F(FolderItemTest, StreamsAppendAndReadBytesUnchangedAndFailuresAreToldApart) {
  auto file = platform::FolderItem(root()).Child("data");
  EXPECT_EQ(file.OpenAsTextFile(), nullptr);
  file.AppendToTextFile()->Write(std::string("a\0b", 3));
  file.AppendToTextFile()->WriteLine("\xC3\xA9");
  EXPECT_EQ(file.OpenAsTextFile()->ReadAll(), std::string("a\0b\xC3\xA9\n", 6));
  file.Delete();
  EXPECT_FALSE(file.Exists());
  // In a folder that is missing: nil from the quiet calls, an exception from the others.
  auto missing = platform::FolderItem(root()).Child("no").Child("file");
  EXPECT_EQ(missing.AppendToTextFile(), nullptr);
  EXPECT_THROW(platform::TextOutputStream::Open(missing), platform::IOException);
  EXPECT_THROW(missing.CreateFolder(), platform::IOException);
  missing.Delete();  // no word on failure
}

}  // namespace
