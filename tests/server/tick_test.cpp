// The server's tick against a real channel: what sender processes write reaches the windows, in
// order, many messages a tick but never more than a tick's time; a busy channel never blocks the
// tick; start-up purges leftovers, waits out a prober, and the first tick comes at once.

#include <gtest/gtest.h>
#include <signal.h>

#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "server_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::ServerTest;

std::string Create(const std::string& id, const std::string& title, const std::string& rest = "") {
  return R"({"obj_id":")" + id + R"(","cmd":"create","type":"wprogress","style":1,"title":")" +
         title + "\"" + rest + "}";
}
std::string Set(const std::string& id, const std::string& title) {
  return R"({"obj_id":")" + id + R"(","cmd":"set","title":")" + title + R"("})";
}

bool Occupied(const std::string& name) {
  return lock_file::make(name, log_file::make_null()) == nullptr;
}

TEST_F(ServerTest, SenderProcessesDriveTwoWindowsAndAPressRepliesOnTheReplyChannel) {
  Start();
  SendFromProcess({
      Create("p1", "Copy", R"(,"style":3,"btn_spec":[{"id":"stop","text":"Stop"}])"),
      Create("p2", "Other"),
      R"({"obj_id":"p1","cmd":"set","message":"Step 2","progress":0.5})",
      R"({"obj_id":"p1","cmd":"push","style":1,"btn_spec":[{"id":"ok","text":"OK"}]})",
  });
  ASSERT_TRUE(RunUntil([&] { return Window("p1") && Window("p1")->stack.size() == 2; }));
  wProgress& p1 = *Window("p1");
  EXPECT_EQ(p1.btn(0).Caption(), "OK");
  EXPECT_EQ(TitleOf("p2"), "Other");

  QTest::mouseClick(p1.btn(0).Widget(), Qt::LeftButton);
  EXPECT_EQ(Reply(), R"({"obj_id":"p1","cmd":"pressed","btn_id":"ok"})");
  // The push is gone and the state below shows again, as "set" left it.
  EXPECT_EQ(p1.btn(0).Caption(), "Stop");
  EXPECT_EQ(p1.Label1().Text(), "Step 2");
  EXPECT_EQ(p1.ProgressBar1().Value(), 500);

  SendFromProcess({R"({"obj_id":"p1","cmd":"delete"})"});
  ASSERT_TRUE(RunUntil([&] { return Window("p1") == nullptr; }));
  ASSERT_NE(Window("p2"), nullptr);
  EXPECT_TRUE(Window("p2")->Widget()->isVisible());
}

TEST_F(ServerTest, MessagesWaitingTogetherAreHandledInOneTickInTheirOrder) {
  Start();
  // The first window of a process loads its fonts, which can take a tick's time on its own.
  server->process(Create("p1", "0"));
  Put({Set("p1", "1"), Set("p1", "2"), Set("p1", "3")});
  server->poll();
  EXPECT_EQ(TitleOf("p1"), "3");
  EXPECT_FALSE(std::filesystem::exists(Data()));
}

TEST_F(ServerTest, ATickEndsWhenItsTimeIsUsedAndTheRestFollowInOrder) {
  Start();
  constexpr int kSets = 5000;  // far more than 10 ms of work
  std::vector<std::string> messages = {Create("p1", "0")};
  for (int i = 1; i <= kSets; ++i) messages.push_back(Set("p1", std::to_string(i)));
  Put(messages);
  server->poll();
  int last = std::stoi(TitleOf("p1"));
  EXPECT_LT(last, kSets) << "one tick handled every message";
  for (int tick = 0; tick < kSets && last < kSets; ++tick) {
    server->poll();
    int now = std::stoi(TitleOf("p1"));
    ASSERT_GT(now, last) << "a tick handled nothing, or went back";
    last = now;
  }
  EXPECT_EQ(last, kSets);
}

TEST_F(ServerTest, ABusyChannelMakesTheTickReadNothingAndWaitForNobody) {
  Start();
  Put({Create("p1", "A")});
  const auto ready = root() / "held";
  auto holder = qem_test::Spawn({QEM_CHANNEL_HELPER, "hold-lock",
                                 (prefs() / "qem.many_to_one.cmd").string(), ready.string()});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 10s));
  server->poll();  // a tick that waited for the holder would never come back here
  EXPECT_EQ(Window("p1"), nullptr);
  EXPECT_TRUE(std::filesystem::exists(Data()));
  holder.Kill(SIGKILL);
  holder.Wait(10s);
  server->poll();
  EXPECT_EQ(TitleOf("p1"), "A");
}

TEST_F(ServerTest, LeftoversArePurgedAndTheFirstTickComesAtOnce) {
  Put({Create("stale", "left by an earlier run")});
  Start();
  EXPECT_FALSE(std::filesystem::exists(Data()));
  QCoreApplication::processEvents();
  EXPECT_TRUE(Occupied("up")) << "the launch lock waits for a full period";
  Put({Create("fresh", "B")});
  ASSERT_TRUE(RunUntil([&] { return Window("fresh") != nullptr; }));
  EXPECT_EQ(Window("stale"), nullptr);
}

TEST_F(ServerTest, GarbageThroughTheChannelLeavesEveryWindowIntact) {
  Start();
  SendFromProcess({Create("p1", "A"), Create("p2", "B")});
  ASSERT_TRUE(RunUntil([&] { return Window("p1") && Window("p2"); }));
  testing::internal::CaptureStderr();
  SendFromProcess({
      "not json at all",
      R"([{"obj_id":"p1","cmd":"delete"}])",
      R"("p2")",
      R"({"pad":")" + std::string(1 << 20, 'x') + R"("})",
      R"({"obj_id":"p9","cmd":"set","title":")" + std::string(1 << 20, 'y') + R"("})",
      R"({"a":)" + std::string(100000, '['),
      R"({"obj_id":"p2","cmd":"delete","a":)" + std::string(1000, '[') + std::string(1000, ']') +
          "}",
      Set("p1", "after"),
  });
  bool served = RunUntil([&] { return TitleOf("p1") == "after"; });
  std::string said = testing::internal::GetCapturedStderr();
  ASSERT_TRUE(served);
  EXPECT_EQ(said, "qem_util: JSON nested too deeply\n");
  EXPECT_EQ(TitleOf("p2"), "B");
  EXPECT_EQ(server->objects().size(), 2u);
  EXPECT_TRUE(Window("p1")->Widget()->isVisible());
  EXPECT_TRUE(Window("p2")->Widget()->isVisible());
}

TEST_F(ServerTest, AProberThatHoldsTheReceiverLockForAMomentIsWaitedOut) {
  auto prober = many_to_one::receiver::make("cmd", log_file::make_null());
  ASSERT_NE(prober, nullptr);
  std::thread let_go([&prober] {
    std::this_thread::sleep_for(30ms);
    prober.reset();
  });
  testing::internal::CaptureStderr();
  Start();
  let_go.join();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(RunUntil([] { return Occupied("up"); }));
}

TEST_F(ServerTest, AChannelThatCannotBeEnteredIsReportedOnceUntilItWorksAgain) {
  Start();
  const auto entry = prefs() / "qem.many_to_one.cmd";
  testing::internal::CaptureStderr();
  std::filesystem::create_directory(entry);  // where the entry lock goes: never a lock
  qem_test::WriteFile(Data(), Create("p1", "A") + '\0');
  for (int i = 0; i < 5; ++i) server->poll();
  std::filesystem::remove(entry);
  server->poll();
  std::filesystem::create_directory(entry);
  qem_test::WriteFile(Data(), Set("p1", "B") + '\0');
  server->poll();
  server->poll();
  std::string said = testing::internal::GetCapturedStderr();
  EXPECT_EQ(TitleOf("p1"), "A");
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2) << said;
  EXPECT_NE(said.find(entry.string()), std::string::npos) << said;
}

}  // namespace
