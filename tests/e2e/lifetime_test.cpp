// The helper's lifetime, end to end: the real executable against locks held by the test or by
// another process standing in for the starting application.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "helper_fixture.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;
using Lifetime = qem_test::HelperTest;

TEST_F(Lifetime, RefusalsAndAnswersEndAtOnceWithoutTouchingAnyFileOrDisplay) {
  // Held, so that only the command line can end the helper at once; that needs no display: the
  // platform that would need one, with none to be had.
  auto alive = lock_file::make("alive", log_file::make_null());
  qem_test::ScopedEnv platform("QT_QPA_PLATFORM", "xcb"), display("DISPLAY", nullptr),
      wayland("WAYLAND_DISPLAY", nullptr);
  const std::string gone = (root() / "gone").string();
  const struct {
    std::vector<std::string> line;
    const char* tmpdir;  // nullptr: the test's own
    int status;
    std::string said;       // in the one line on stderr; "" for no line at all
    std::string printed{};  // what stdout begins with; "" for nothing on it
  } rows[] = {
      {{}, nullptr, 0, ""},  // a required option missing: nothing to serve
      {{"--stay-alive-key=alive", "--channel=b"}, nullptr, 0, ""},
      {{"--channel=b", "--launch-key=c", "--stay-alive-key="}, nullptr, 0, ""},
      {{"--stay-alive-key=alive", "--channel", "--launch-key=c"}, nullptr, 0, ""},
      {{"--stay-alive-key=alive", "--channel=../up", "--launch-key=l"}, nullptr, 2, "--channel"},
      {ServerArgs(), gone.c_str(), 4, gone},
      {{"--help"}, nullptr, 0, "", "Usage: qem_util --stay-alive-key=NAME"},
      {{"--version"}, nullptr, 0, "", "qem_util " QEM_UTIL_VERSION "\n"},
      {{"--version", "--help"}, nullptr, 0, ""},  // not alone: required options missing
  };
  for (const auto& row : rows) {
    qem_test::ScopedEnv tmpdir("TMPDIR", row.tmpdir ? row.tmpdir : tmp().c_str());
    auto helper = StartHelper(row.line);
    EXPECT_EQ(helper.Wait(10s), row.status) << testing::PrintToString(row.line);
    const std::string said = helper.Err();
    EXPECT_EQ(said.empty(), row.said.empty()) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), row.said.empty() ? 0 : 1) << said;
    EXPECT_NE(said.find(row.said), std::string::npos) << said;
    const std::string printed = helper.Out();
    EXPECT_EQ(printed.substr(0, row.printed.size()), row.printed) << printed;
    EXPECT_EQ(printed.empty(), row.printed.empty()) << printed;
  }
  alive.reset();
  EXPECT_TRUE(std::filesystem::is_empty(tmp()));
  EXPECT_TRUE(std::filesystem::is_empty(prefs()));
  EXPECT_FALSE(std::filesystem::exists(gone));
}

TEST_F(Lifetime, HelperTakesTheLaunchLockAndQuitsWhenTheStayAliveLockIsLetGo) {
  auto alive = lock_file::make("alive", log_file::make_null());
  ASSERT_NE(alive, nullptr);
  auto args = ServerArgs();
  args.push_back("--test=false");  // anything but "true" is server mode
  auto helper = StartHelper(args);
  EXPECT_TRUE(qem_test::WaitUntil([] { return qem_test::LockHeld("launched"); }, 2s));
  alive.reset();
  EXPECT_EQ(helper.Wait(2s), 0);
  EXPECT_FALSE(qem_test::LockHeld("launched"));
  // A stay-alive lock that nobody holds ends the next one on its first tick.
  EXPECT_EQ(StartHelper(args, "next").Wait(2s), 0);
  EXPECT_TRUE(std::filesystem::is_empty(tmp())) << "a lock file was left behind";
  EXPECT_EQ(helper.Err().find("qem_util:"), std::string::npos) << helper.Err();
}

TEST_F(Lifetime, ASignalToEndEndsTheHelperAsTheStayAliveLocksReleaseDoes) {
  auto alive = lock_file::make("alive", log_file::make_null());
  for (int number : {SIGTERM, SIGINT, SIGHUP}) {
    auto helper = StartHelper(ServerArgs());
    ASSERT_TRUE(qem_test::WaitUntil([] { return qem_test::LockHeld("launched"); }, 20s));
    qem_test::Send(
        "cmd", {R"({"obj_id":"p1","cmd":"create","type":"wprogress","style":3,"title":"Open"})"});
    ASSERT_TRUE(qem_test::WaitUntil(
        [&] { return !std::filesystem::exists(prefs() / "qem.many_to_one.cmd.dir" / "data"); },
        20s));
    helper.Kill(number);
    EXPECT_EQ(helper.Wait(20s), 0) << strsignal(number);
    // Both of its locks released and their files removed: the launch lock, the receiver lock.
    EXPECT_FALSE(std::filesystem::exists(tmp() / "launched")) << strsignal(number);
    EXPECT_FALSE(std::filesystem::exists(prefs() / "qem.many_to_one.r.cmd")) << strsignal(number);
    EXPECT_EQ(helper.Err().find("qem_util:"), std::string::npos) << helper.Err();
  }
}

TEST_F(Lifetime, TheStayAliveLockIsWaitedOnAndTakenAgainInTheMomentItWasFreeKeepsTheHelperUp) {
  if (!std::filesystem::exists("/proc/locks")) GTEST_SKIP() << "no list of who waits for a lock";
  const auto alive = tmp() / "alive";
  // Stand-ins for the starting application, each holding a lock until it is killed.
  const auto hold = [&](const std::filesystem::path& lock) {
    const auto ready = root() / (lock.filename().string() + ".ready");
    auto holder = qem_test::Spawn({QEM_CHANNEL_HELPER, "hold-lock", lock, ready});
    EXPECT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 10s));
    return holder;
  };
  auto first = hold(alive);
  auto helper = StartHelper({"--stay-alive-key=alive", "--channel=cmd", "--launch-key=up"});
  const auto waits = [&] { return qem_test::WaitsForLock(helper.pid(), alive); };
  ASSERT_TRUE(qem_test::WaitUntil(waits, 20s)) << "the helper does not wait for the lock";
  // A second one holds a lock of the same name before the first dies, so that the name is never
  // free: the helper sees the first's lock let go, tries, and waits again.
  auto second = hold(tmp() / "next");
  std::filesystem::rename(tmp() / "next", alive);
  first.Kill(SIGKILL);
  EXPECT_TRUE(qem_test::WaitUntil(waits, 20s)) << "the helper does not wait again";
  EXPECT_TRUE(helper.Running());
  second.Kill(SIGKILL);
  EXPECT_EQ(helper.Wait(20s), 0);
}

}  // namespace
