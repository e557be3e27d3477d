#include "platform/change_watch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/temp_env.h"

namespace {

namespace fs = std::filesystem;
using ChangeWatchTest = qem_test::TempEnvTest;

// A reader sleeps until the file is made and again until it grows: a watch of the folder's
// entries alone would sleep through the growth.
TEST_F(ChangeWatchTest, TellsOfTheFileBeingMadeAndGrowingAndOfNoOtherFile) {
#if !defined(__linux__) && !defined(__APPLE__)
  GTEST_SKIP() << "this platform tells no changes";
#endif
  const fs::path folder = root() / "channel";
  fs::create_directory(folder);
  platform::ChangeWatch watch;
  ASSERT_TRUE(watch.Watch(platform::FolderItem(folder), "data"));
  const auto append = [&](const char* name) { std::ofstream(folder / name, std::ios::app) << "x"; };
  const auto told = [&] { return watch.Wait(10'000); };  // generous: the machine may be slow

  append("data");
  EXPECT_TRUE(told()) << "made";
  append("data");
  EXPECT_TRUE(told()) << "grown";
  fs::remove(folder / "data");
  append("other");
  EXPECT_FALSE(watch.Wait(200)) << "told of another file, or of the file's removal";
  append("data");
  EXPECT_TRUE(told()) << "made anew";
}

}  // namespace
