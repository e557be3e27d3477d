#include "platform/folder_item.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/exceptions.h"
#include "platform/text_stream.h"
#include "support/temp_env.h"

namespace {

class FolderItemTest : public qem_test::TempEnvTest {};

TEST_F(FolderItemTest, TemporaryFolderIsTmpdirElseTmpAndNothingElse) {
  const std::string own = tmp().string(), gone = (root() / "gone").string();
  const struct {
    const char* name;
    const char* tmpdir;  // nullptr: unset
    std::string expected;
  } rows[] = {
      {"TMPDIR", own.c_str(), own},
      // The starting application looks in TMPDIR only; TMP, TEMP and TEMPDIR must not count.
      {"TMP, TEMP, TEMPDIR without TMPDIR", nullptr, "/tmp"},
      {"empty TMPDIR", "", "/tmp"},
      {"TMPDIR that is gone: its path, no error", gone.c_str(), gone},
  };
  const std::string elsewhere = root().string();
  qem_test::ScopedEnv tmp_var("TMP", elsewhere.c_str()), temp_var("TEMP", elsewhere.c_str()),
      tempdir_var("TEMPDIR", elsewhere.c_str());
  for (const auto& row : rows) {
    qem_test::ScopedEnv tmpdir("TMPDIR", row.tmpdir);
    EXPECT_EQ(platform::SpecialFolder::Temporary().NativePath(), row.expected) << row.name;
  }
}

TEST_F(FolderItemTest, PreferencesFolderAndEveryParentItMakesArePrivate) {
  EXPECT_EQ(platform::SpecialFolder::Preferences().Path(), prefs());
  // Without XDG_CONFIG_HOME it is made under HOME, and so is a HOME that is not there yet.
  qem_test::ScopedEnv config("XDG_CONFIG_HOME", nullptr);
  qem_test::ScopedEnv home("HOME", (root() / "new" / "home").c_str());
  auto made = platform::SpecialFolder::Preferences();
  EXPECT_EQ(made.Path(), root() / "new" / "home" / ".config");
  for (auto path : {root() / "new", root() / "new" / "home", made.Path()}) {
    struct stat st;
    ASSERT_EQ(::stat(path.c_str(), &st), 0) << path;
    EXPECT_EQ(st.st_mode & 0777, 0700u) << path;
  }
}

TEST_F(FolderItemTest, StreamsAppendAndReadBytesUnchanged) {
  auto file = platform::FolderItem(root()).Child("data");
  EXPECT_FALSE(file.Exists());
  EXPECT_EQ(file.OpenAsTextFile(), nullptr);
  file.AppendToTextFile()->Write(std::string("a\0b", 3));
  file.AppendToTextFile()->WriteLine("\xC3\xA9");
  EXPECT_EQ(file.OpenAsTextFile()->ReadAll(), std::string("a\0b\xC3\xA9\n", 6));
  file.Delete();
  EXPECT_FALSE(file.Exists());
}

TEST_F(FolderItemTest, FailuresAreReportedAsTheContractSays) {
  auto missing = platform::FolderItem(root()).Child("no").Child("file");
  EXPECT_EQ(missing.AppendToTextFile(), nullptr);
  EXPECT_THROW(platform::TextOutputStream::Open(missing), platform::IOException);
  EXPECT_THROW(missing.CreateFolder(), platform::IOException);
  missing.Delete();  // no word on failure
}

}  // namespace
