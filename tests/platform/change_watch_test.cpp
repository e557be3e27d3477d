#include "platform/change_watch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "support/temp_env.h"

namespace {

namespace fs = std::filesystem;

class ChangeWatchTest : public qem_test::TempEnvTest {
 protected:
  void SetUp() override {
    TempEnvTest::SetUp();
    folder = root() / "channel";
    fs::create_directory(folder);
#if !defined(__linux__) && !defined(__APPLE__)
    GTEST_SKIP() << "this platform tells no changes";
#endif
    ASSERT_TRUE(watch.Watch(platform::FolderItem(folder), "data"));
  }
  void Append(const std::string& name) {
    std::ofstream(folder / name, std::ios::app) << "x";
  }
  // Generous: a change is told at once, but the machine may be slow.
  bool Told() {
    return watch.Wait(10'000);
  }

  fs::path folder;
  platform::ChangeWatch watch;
};

// A reader sleeps until the file is made and again until it grows: a watch of the folder's
// entries alone would sleep through the growth.
TEST_F(ChangeWatchTest, TellsOfTheFileBeingMadeAndGrowingAndOfNoOtherFile) {
  EXPECT_FALSE(watch.Wait(50)) << "told with nothing written";
  Append("data");
  EXPECT_TRUE(Told()) << "made";
  Append("data");
  EXPECT_TRUE(Told()) << "grown";
  fs::remove(folder / "data");
  Append("other");
  EXPECT_FALSE(watch.Wait(200)) << "told of another file, or of the file's removal";
  Append("data");
  EXPECT_TRUE(Told()) << "made anew";
}

TEST_F(ChangeWatchTest, AFolderThatGoesEndsTheWatchUntilItIsWatchedAgain) {
  fs::remove(folder);
  EXPECT_TRUE(Told());
  EXPECT_FALSE(watch.Watching());
  EXPECT_FALSE(watch.Watch(platform::FolderItem(folder), "data")) << "watching a missing folder";
  fs::create_directory(folder);
  ASSERT_TRUE(watch.Watch(platform::FolderItem(folder), "data"));
  Append("data");
  EXPECT_TRUE(Told());
  EXPECT_TRUE(watch.Watching());
}

}  // namespace
