// The wake-up on a write to the command channel, against real sender processes.

#include <gtest/gtest.h>
#include <signal.h>
#include <time.h>

#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "server_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::Create;
using qem_test::Set;

// Ticks come when the test calls poll: the first comes at once, the others in an hour, or two
// once the tick is only the safety net.
constexpr int kHour = 3'600'000;
constexpr qem_util::pacing kByHand{.tick_ms = kHour, .safety_net_ms = 2 * kHour};

// Every title that a window was given, in the order given, by the text before its ':'.
struct TitleLog : QObject {
  std::map<std::string, std::vector<std::string>> titles;
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::WindowTitleChange && object->isWidgetType()) {
      const std::string title = static_cast<QWidget*>(object)->windowTitle().toStdString();
      titles[title.substr(0, title.find(':'))].push_back(title);
    }
    return false;
  }
};

double ThreadCpuMs() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

using Wake = qem_test::ServerTest;

TEST_F(Wake, WokenStepsAloneBringEachMessageButNeverInsideTheCaller) {
  Start(kByHand);
  ASSERT_TRUE(RunUntil([&] { return server->steps().ticks == 1; }));  // the first tick, at once
  qem_test::Send("cmd", {Create("p1", "A")});
  server->wake();
  EXPECT_EQ(Window("p1"), nullptr) << "the step ran inside the call";
  ASSERT_TRUE(RunUntil([&] { return TitleOf("p1") == "A"; }));

  // A sender still inside the channel: the woken step tries again until it has let go.
  auto holder = qem_test::Spawn(
      {QEM_CHANNEL_HELPER, "hold-lock", prefs() / "qem.many_to_one.cmd", root() / "held"});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(root() / "held"); }, 10s));
  const auto woken = server->steps().woken;
  qem_test::WriteFile(Data(), Set("p1", "C") + '\0');
  ASSERT_TRUE(RunUntil([&] { return server->steps().woken > woken + 2; }));
  EXPECT_EQ(TitleOf("p1"), "A");
  holder.Kill(SIGKILL);
  holder.Wait(10s);
  EXPECT_TRUE(RunUntil([&] { return TitleOf("p1") == "C"; }));
  EXPECT_EQ(server->steps().ticks, 1U);
}

TEST_F(Wake, TheTickTakesOverAStreamAndAFolderMadeAnewAndHandsBack) {
  Start(kByHand);
  ASSERT_TRUE(RunUntil([&] { return server->steps().ticks == 1; }));
  server->process(Create("p1", "A"));
  // Two messages in one step: a stream, left to the tick until it finds the channel empty.
  qem_test::Send("cmd", {Set("p1", "B"), Set("p1", "C")});
  ASSERT_TRUE(RunUntil([&] { return TitleOf("p1") == "C"; }));
  EXPECT_EQ(server->tick_period(), kHour) << "a stream read by the safety net";
  qem_test::Send("cmd", {Set("p1", "D")});
  EXPECT_FALSE(RunUntil([&] { return TitleOf("p1") == "D"; }, 200ms)) << "woken during a stream";
  server->poll();
  EXPECT_EQ(TitleOf("p1"), "D");
  server->poll();
  qem_test::Send("cmd", {Set("p1", "E")});
  EXPECT_TRUE(RunUntil([&] { return TitleOf("p1") == "E"; })) << "not handed back";

  // The folder goes (told as a change too): the short tick looks until it is back; the tick that
  // reads what its sender made anew watches it again, and the safety net takes over.
  std::filesystem::remove(Data().parent_path());
  ASSERT_TRUE(RunUntil([&] { return server->tick_period() == kHour; })) << "gone, not seen";
  ASSERT_EQ(qem_test::Run({QEM_CHANNEL_TOOL, "send", "cmd"}, root(), Set("p1", "F") + "\n").status,
            0);
  server->poll();
  EXPECT_EQ(TitleOf("p1"), "F");
  EXPECT_EQ(server->tick_period(), 2 * kHour);
  qem_test::Send("cmd", {Set("p1", "G")});
  EXPECT_TRUE(RunUntil([&] { return TitleOf("p1") == "G"; })) << "the folder is not watched";
}

TEST_F(Wake, ManySendersLoseNothingWithOrWithoutWakeUpsAndNeverStallTheThread) {
  constexpr int kSenders = 8, kEach = 40;
  for (const bool wake : {true, false}) {
    SCOPED_TRACE(wake ? "woken" : "tick alone");
    Start({.safety_net_ms = 25, .watch_channel = wake});  // settles in ticks, not seconds
    std::map<std::string, std::vector<std::string>> expected;
    for (int k = 0; k < kSenders; ++k) {
      const std::string id = std::string("w").append(std::to_string(k)), tag = std::to_string(k);
      server->process(Create(id, "start"));
      std::string lines;
      for (int i = 0; i < kEach; ++i) {
        expected[tag].push_back(tag + ":" + std::to_string(i));
        lines += Set(id, expected[tag].back()) + "\n";
      }
      qem_test::WriteFile(root() / ("input" + tag), lines);
    }
    TitleLog log;
    QCoreApplication::instance()->installEventFilter(&log);
    // The longest stretch of the thread's own work between two beats of a 1 ms heartbeat.
    QTimer beat;
    double last = 0, stall = 0;
    QObject::connect(&beat, &QTimer::timeout, [&] {
      const double now = ThreadCpuMs();
      if (last > 0) stall = std::max(stall, now - last);
      last = now;
    });
    beat.start(1);
    std::vector<qem_test::Child> senders;
    for (int k = 0; k < kSenders; ++k) {
      senders.push_back(qem_test::Spawn({QEM_CHANNEL_TOOL, "send", "cmd"},
                                        {.stdin_path = root() / ("input" + std::to_string(k))}));
    }
    // The loop runs while they send, so that their writes are told as they come.
    RunUntil([&] { return log.titles == expected; }, 60s);
    for (auto& sender : senders) ASSERT_EQ(sender.Wait(60s), 0);
    EXPECT_EQ(log.titles, expected);
    EXPECT_LT(stall, 15.0);
    // Woken steps run for messages, never on their own: once the last write's notice is
    // served (it may come after the tick has read that write), an idle channel wakes nothing.
    const auto settle = [&](std::uint64_t ticks) {
      const auto from = server->steps().ticks;
      RunUntil([&] { return server->steps().ticks > from + ticks; });
    };
    settle(2);
    const auto woken = server->steps().woken;
    EXPECT_LE(woken, static_cast<std::uint64_t>(kSenders * kEach));
    EXPECT_EQ(woken > 0, wake);
    settle(8);
    EXPECT_EQ(server->steps().woken, woken);
    QCoreApplication::instance()->removeEventFilter(&log);
    server.reset();
  }
}

}  // namespace
