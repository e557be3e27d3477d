// The server's tick against a real channel: many messages a tick, in order, but no more than a
// tick's time; a channel that can't be read is said once, not every tick; the first tick comes
// at once, and a prober's moment on the receiver lock is waited out; the tick slows to a safety
// net only while the watches can be relied on.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "server_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::Create;
using qem_test::ServerTest;
using qem_test::Set;

TEST_F(ServerTest, ATickHandlesWhatWaitsInOrderUntilItsTimeIsUsed) {
  Start();
  // The first window of a process loads its fonts, which can take a tick's time on its own.
  server->process(Create("p1", "0"));
  qem_test::Send("cmd", {Set("p1", "1"), Set("p1", "2"), Set("p1", "3")});
  server->poll();
  EXPECT_EQ(TitleOf("p1"), "3");
  EXPECT_FALSE(std::filesystem::exists(Data()));

  // Far more than 10 ms of work: each new message is wrapped and measured afresh.
  constexpr int kSets = 5000;
  std::vector<std::string> sets;
  for (int i = 1; i <= kSets; ++i) {
    sets.push_back(R"({"obj_id":"p1","cmd":"set","title":")" + std::to_string(i) +
                   R"(","message":")" + std::string(300, 'w') + " " + std::to_string(i) + "\"}");
  }
  qem_test::Send("cmd", sets);
  int last = 0;
  for (int tick = 0; tick < kSets && last < kSets; ++tick) {
    server->poll();
    int now = std::stoi(TitleOf("p1"));
    ASSERT_GT(now, last) << "a tick handled nothing, or went back";
    ASSERT_TRUE(tick > 0 || now < kSets) << "one tick handled every message";
    ASSERT_TRUE(now == kSets || server->tick_period() == 25) << "the rest left to the safety net";
    last = now;
  }
  EXPECT_EQ(last, kSets);
}

TEST_F(ServerTest, AChannelThatCantBeReadIsSaidWhenItBeginsAndEndsAndServedAgain) {
  Start();
  qem_test::WriteFile(root() / "elsewhere", "planted");
  std::filesystem::create_symlink(root() / "elsewhere", Data());
  testing::internal::CaptureStderr();
  for (int tick = 0; tick < 40; ++tick) server->poll();
  std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_NE(said.find("symbolic link"), std::string::npos) << said;

  std::filesystem::remove(Data());
  qem_test::Send("cmd", {Create("p1", "A")});
  testing::internal::CaptureStderr();
  for (int tick = 0; tick < 40; ++tick) server->poll();
  said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(TitleOf("p1"), "A");
  EXPECT_EQ(said, "qem_util: channel \"cmd\" can be read again\n");
}

TEST_F(ServerTest, TheFirstTickComesAtOnceAndAProberIsWaitedOut) {
  auto prober = many_to_one::receiver::make("cmd", log_file::make_null());
  std::thread let_go([&prober] {
    std::this_thread::sleep_for(30ms);
    prober.reset();
  });
  Start();
  let_go.join();
  QCoreApplication::processEvents();
  EXPECT_TRUE(qem_test::LockHeld("up")) << "no server, or its launch lock waits for a period";
  // Held from then on, tick after tick.
  for (int tick = 0; tick < 2; ++tick) {
    server->poll();
    EXPECT_TRUE(qem_test::LockHeld("up")) << tick;
  }
}

TEST_F(ServerTest, TheTickIsASafetyNetOnlyOnceTheHelperIsUpAndBothWatchesAreArmed) {
  const qem_util::pacing serving;
  std::shared_ptr<lock_file> held_launch_lock;
  const struct {
    const char* name;
    std::function<void()> setup;
    int period;
  } rows[] = {
      {"both watches armed", nullptr, serving.safety_net_ms},
      {"the launch lock held by another, so not up",
       [&] { held_launch_lock = lock_file::make("up", log_file::make_null()); }, serving.tick_ms},
      {"the stay-alive lock's file can't be waited on",
       [&] {
         alive.reset();
         std::filesystem::create_symlink(root(), tmp() / "alive");
       },
       serving.tick_ms},
  };
  for (const auto& row : rows) {
    if (row.setup) row.setup();
    Start();
    ASSERT_TRUE(RunUntil([&] { return server->steps().ticks > 0; })) << row.name;
    EXPECT_TRUE(RunUntil([&] { return server->tick_period() == row.period; })) << row.name;
    server.reset();
    held_launch_lock.reset();
  }
}

}  // namespace
