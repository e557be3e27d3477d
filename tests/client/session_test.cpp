// The library against real processes: helpers that fail to start in each way there is, and a
// stand-in that keeps what it receives.

#include "client/session.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "channel/many_to_one_sender.h"
#include "client_fixture.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using qem_client::command;
using qem_client::event;
using qem_client::launch_error;
using qem_test::ScopedEnv;

class Session : public qem_test::ClientTest {
 protected:
  // Nothing of a session is left in the two folders, but what the stand-in keeps.
  void ExpectNothingLeft() {
    for (const auto& e : std::filesystem::directory_iterator(tmp())) {
      EXPECT_EQ(e.path().filename(), "received") << "left in TMPDIR";
    }
    EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "left in preferences";
  }
  // An executable script in the test's folder.
  std::string Script(const std::string& name, const std::string& body) {
    const auto path = root() / name;
    qem_test::WriteFile(path, "#!/bin/bash\n" + body);
    ::chmod(path.c_str(), 0755);
    return path.string();
  }
  // next_event with a limit of a minute while `meanwhile` runs on a thread of its own. What only
  // the limit ends fails, instead of passing late.
  static std::optional<event> NextEventWhile(qem_client::session& s,
                                             const std::function<void()>& meanwhile) {
    std::thread other(meanwhile);
    const auto start = Clock::now();
    std::optional<event> e = s.next_event(60s);
    other.join();
    EXPECT_LT(Clock::now() - start, 30s) << "woken only by the limit";
    return e;
  }
};

TEST_F(Session, AHelperThatCannotServeIsToldPlainlyWithinTheLimit) {
  ScopedEnv no_wayland("WAYLAND_DISPLAY", nullptr);
  const std::string nothing = (root() / "nothing").string();
  const struct {
    const char* name;
    std::string helper;  // empty: the one QEM_UTIL_HELPER names
    launch_error::reason why;
    std::string says;
    const char* platform = "offscreen";  // nullptr: the platform's own choice, X on Linux
    std::chrono::milliseconds limit = 60s;
  } cases[] = {
      {"named by the variable but missing", "", launch_error::reason::missing,
       nothing + "\" is missing (named by QEM_UTIL_HELPER)"},
      {"not executable", Script("plain", "exit 0\n"), launch_error::reason::not_executable,
       "can't be run: Permission denied"},
      {"exits with status 3", Script("three", "echo 'qem_util: cannot serve' >&2\nexit 3\n"),
       launch_error::reason::exited, "exited with status 3 before it served: qem_util: cannot"},
      {"crashes", Script("crash", "kill -SEGV $$\n"), launch_error::reason::exited,
       "ended by signal 11"},
      {"no display", QEM_UTIL_PATH, launch_error::reason::no_display, "could not open a display",
       nullptr},
      {"never serves", Script("stuck", "exec sleep 120\n"), launch_error::reason::timed_out,
       "within 1 s", "offscreen", 1000ms},
  };
  ::chmod((root() / "plain").c_str(), 0644);
  for (const auto& row : cases) {
    ScopedEnv named("QEM_UTIL_HELPER", row.helper.empty() ? nothing.c_str() : nullptr);
    ScopedEnv platform("QT_QPA_PLATFORM", row.platform);
    ScopedEnv display("DISPLAY", row.platform ? std::getenv("DISPLAY") : ":4093");
    const auto start = Clock::now();
    try {
      qem_client::session s(
          {.helper = row.helper, .launch_limit = row.limit, .relay_helper_output = false});
      ADD_FAILURE() << row.name << ": launched";
    } catch (const launch_error& error) {
      const std::string said = error.what();
      EXPECT_EQ(error.why, row.why) << row.name << ": " << said;
      EXPECT_NE(said.find(row.says), std::string::npos) << row.name << ": " << said;
      EXPECT_EQ(said.find('\n'), std::string::npos) << said;
    }
    EXPECT_LT(Clock::now() - start, 30s) << row.name;
    ExpectNothingLeft();
  }
}

// The helper quits on its own once the stay-alive lock goes; one that had to be ended by a
// signal would take the whole quit limit.
TEST_F(Session, ItsEndEndsTheHelperWithinMomentsAndLeavesNothing) {
  auto s = std::make_unique<qem_client::session>(
      qem_client::launch_options{.helper = StandIn(), .quit_limit = 60s});
  const pid_t pid = s->helper_pid();
  const auto start = Clock::now();
  s.reset();
  EXPECT_LT(Clock::now() - start, 30s);
  EXPECT_EQ(::kill(pid, 0), -1) << "still there, or not reaped";
  EXPECT_EQ(errno, ESRCH);
  ExpectNothingLeft();
}

// A wait sleeps until something happens (qem_ctl's test counts how seldom it is woken meanwhile):
// the helper's end wakes it.
TEST_F(Session, AWaitIsWokenWhenTheHelperDies) {
  qem_client::session s({.helper = StandIn(), .relay_helper_output = false});
  const pid_t helper = s.helper_pid();
  std::optional<event> e = NextEventWhile(s, [&] {
    std::this_thread::sleep_for(100ms);  // a moment to settle into the wait
    ::kill(helper, SIGKILL);
  });
  ASSERT_TRUE(e) << "the helper's end did not wake the wait";
  EXPECT_EQ(e->what, event::kind::helper_ended);
  EXPECT_EQ(e->exit_status, 128 + SIGKILL);
  EXPECT_FALSE(s.helper_running());
  EXPECT_THROW(s.send(command::remove("p1")), qem_client::helper_gone);
  e = s.poll();  // the news stays: a caller that asks again is not left waiting
  ASSERT_TRUE(e);
  EXPECT_EQ(e->what, event::kind::helper_ended);
}

TEST_F(Session, RefusedCommandsReachNothingTheOthersArriveAndRepliesComeBackInOrder) {
  qem_client::session s({.helper = StandIn(), .relay_helper_output = false});
  s.send(command::create("p1", {.style = 3}));
  EXPECT_THROW(s.send_json(R"({"obj_id":"a\\b","cmd":"set"})"), qem_client::command_refused);
  s.send_json(R"({"obj_id":"p1","cmd":"set","extra":true})");
  ASSERT_TRUE(s.flush(30s));
  EXPECT_EQ(Received(), R"({"obj_id":"p1","cmd":"create","type":"wprogress","style":3}
{"obj_id":"p1","cmd":"set","extra":true}
)");
  // Written as the helper writes a press.
  auto replies =
      std::make_shared<many_to_one::sender>(s.names().reply_channel, log_file::make_null());
  replies->op()->write(R"({"obj_id":"p1","cmd":"pressed","btn_id":"stop"})");
  replies->op()->write(R"({"obj_id":"p2","cmd":"pressed","btn_id":"yes"})");
  std::optional<event> first = s.next_event(30s), second = s.next_event(30s);
  ASSERT_TRUE(first && second);
  EXPECT_TRUE(first->pressed());
  EXPECT_EQ(first->obj_id + "/" + first->btn_id, "p1/stop");
  EXPECT_EQ(second->obj_id + "/" + second->btn_id, "p2/yes");
  EXPECT_FALSE(s.poll());
  // A reply whose writer still holds the channel (as the helper does for a moment after its
  // write) is taken once the writer lets go, though no write tells of that.
  auto inside = replies->op();
  inside->write(R"({"obj_id":"p3","cmd":"pressed","btn_id":"late"})");
  EXPECT_FALSE(s.poll()) << "read while the writer was inside the channel";
  std::optional<event> late = NextEventWhile(s, [&] {
    std::this_thread::sleep_for(100ms);  // the wait finds the writer inside
    inside.reset();
  });
  ASSERT_TRUE(late) << "the reply was left on the channel";
  EXPECT_EQ(late->btn_id, "late");
  // A channel that can't be read is told as the library's own error.
  std::filesystem::create_symlink(
      "elsewhere", prefs() / ("qem.many_to_one." + s.names().reply_channel + ".dir") / "data");
  EXPECT_THROW(s.poll(), qem_client::channel_error);
}

}  // namespace
