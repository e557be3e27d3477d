// The helper's lifetime, end to end: the real executable against locks held by the test or by
// another process standing in for the starting application.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "helper_fixture.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;
using qem_test::Child;
using qem_test::Spawn;

using Lifetime = qem_test::HelperTest;

// A refusal needs no display: the platform that would need one, with none to be had.
struct NoDisplay {
  qem_test::ScopedEnv platform{"QT_QPA_PLATFORM", "xcb"};
  qem_test::ScopedEnv display{"DISPLAY", nullptr};
  qem_test::ScopedEnv wayland{"WAYLAND_DISPLAY", nullptr};
};

TEST_F(Lifetime, MissingRequiredOptionsEndAtOnceWithoutTouchingAnyFileOrDisplay) {
  // Held, so that only the refusal can end the helper at once.
  auto alive = lock_file::make("a", log_file::make_null());
  NoDisplay no_display;
  std::vector<std::vector<std::string>> lines = {
      {},
      {"--stay-alive-key=a", "--channel=b"},
      {"--stay-alive-key=a", "--launch-key=c"},
      {"--channel=b", "--launch-key=c", "--stay-alive-key="},
      {"--stay-alive-key=a", "--channel", "--launch-key=c"},
  };
  for (const auto& line : lines) {
    auto helper = StartHelper(line);
    EXPECT_EQ(helper.Wait(5s), 0) << testing::PrintToString(line);
    EXPECT_EQ(Stderr(), "");
  }
  alive.reset();
  EXPECT_TRUE(Listing(tmp()).empty());
  EXPECT_TRUE(Listing(prefs()).empty());
}

TEST_F(Lifetime, NamesThatLeaveTheirFolderAreRefusedWithOneLineAndStatusTwo) {
  NoDisplay no_display;
  auto helper = StartHelper({"--stay-alive-key=alive", "--channel=../up", "--launch-key=l"});
  EXPECT_EQ(helper.Wait(10s), 2);
  std::string said = Stderr();
  EXPECT_NE(said.find("--channel"), std::string::npos) << said;
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_TRUE(Listing(tmp()).empty());
  EXPECT_TRUE(Listing(prefs()).empty());
}

TEST_F(Lifetime, TestModeIsChosenBeforeAnyOtherOptionIsRead) {
  auto args = ServerArgs();
  args.push_back("--test=TRUE");
  auto helper = StartHelper(args);
  EXPECT_EQ(helper.Wait(10s), 1);
  EXPECT_NE(Stderr().find("test console"), std::string::npos) << Stderr();
  EXPECT_FALSE(std::filesystem::exists(tmp() / "launched"));
}

TEST_F(Lifetime, HelperTakesTheLaunchLockAndQuitsWhenTheStayAliveLockIsLetGo) {
  auto alive = lock_file::make("alive", log_file::make_null());
  ASSERT_NE(alive, nullptr);
  auto args = ServerArgs();
  args.push_back("--test=false");  // anything but "true" is server mode
  auto helper = StartHelper(args);
  EXPECT_TRUE(qem_test::WaitUntil([] { return Occupied("launched"); }, 2s));
  // Still wanted: it keeps running and holds the launch lock, tick after tick.
  for (int probe = 0; probe < 10; ++probe) {
    EXPECT_EQ(helper.Wait(30ms), -1);
    EXPECT_TRUE(Occupied("launched")) << "probe " << probe;
  }
  alive.reset();
  EXPECT_EQ(helper.Wait(2s), 0);
  EXPECT_FALSE(Occupied("launched"));
  EXPECT_FALSE(std::filesystem::exists(tmp() / "launched")) << "launch lock file left behind";
  EXPECT_EQ(Stderr().find("qem_util:"), std::string::npos) << Stderr();
}

TEST_F(Lifetime, DeathOfTheStartingApplicationEndsTheHelper) {
  auto holder = Spawn(
      {QEM_CHANNEL_HELPER, "hold-lock", (tmp() / "alive").string(), (root() / "held").string()});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(root() / "held"); }, 10s));
  auto helper = StartHelper({"--stay-alive-key=alive", "--channel=cmd", "--launch-key=up"});
  ASSERT_TRUE(qem_test::WaitUntil([] { return Occupied("up"); }, 2s));
  holder.Kill(SIGKILL);
  EXPECT_EQ(holder.Wait(5s), 128 + SIGKILL);
  EXPECT_EQ(helper.Wait(2s), 0);
}

TEST_F(Lifetime, StayAliveLockNeverHeldEndsTheHelperOnItsFirstTick) {
  auto helper = StartHelper({"--stay-alive-key=nobody", "--channel=cmd", "--launch-key=up"});
  EXPECT_EQ(helper.Wait(2s), 0);
  EXPECT_TRUE(Listing(tmp()).empty()) << "a lock file was left behind";
}

}  // namespace
