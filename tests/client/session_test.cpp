// The library against real processes: the helper itself offscreen, scripts that fail to start
// in each way there is, and a stand-in that keeps what it receives.

#include "client/session.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>

#include "channel/many_to_one_sender.h"
#include "client_fixture.h"
#include "support/process.h"
#include "support/scoped_env.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using qem_client::command;
using qem_client::event;
using qem_client::launch_error;
using qem_client::launch_options;
using qem_client::session;

using qem_test::ScopedEnv;

class Session : public qem_test::ClientTest {
 protected:
  launch_options Real() { return {.helper = QEM_UTIL_PATH, .relay_helper_output = false}; }
  // Nothing of a session is left in the two folders, but what the stand-in keeps.
  void ExpectNothingLeft() {
    for (const auto& name : Listing(tmp())) EXPECT_EQ(name, "received") << "left in TMPDIR";
    for (const auto& name : Listing(prefs())) ADD_FAILURE() << name << " left in preferences";
  }
};

TEST_F(Session, AHelperThatCannotServeIsToldPlainlyWithinTheLimit) {
  ScopedEnv no_wayland("WAYLAND_DISPLAY", nullptr);
  const struct {
    const char* name;
    std::string helper;
    launch_error::reason why;
    const char* says;
    const char* platform = "offscreen";  // nullptr: the platform's own choice, X on Linux
  } cases[] = {
      {"missing", (root() / "nothing").string(), launch_error::reason::missing, "is missing"},
      {"a folder", root().string(), launch_error::reason::not_executable, "no executable"},
      {"not executable", Script("plain", "exit 0\n"), launch_error::reason::not_executable,
       "no executable"},
      {"exits with status 3", Script("three", "echo 'qem_util: cannot serve' >&2\nexit 3\n"),
       launch_error::reason::exited, "exited with status 3 before it served: qem_util: cannot"},
      {"crashes", Script("crash", "kill -SEGV $$\n"), launch_error::reason::exited,
       "ended by signal 11"},
      {"no display", QEM_UTIL_PATH, launch_error::reason::no_display, "could not open a display",
       nullptr},
  };
  ::chmod((root() / "plain").c_str(), 0644);
  for (const auto& row : cases) {
    ScopedEnv platform("QT_QPA_PLATFORM", row.platform);
    ScopedEnv display("DISPLAY", row.platform ? std::getenv("DISPLAY") : ":4093");
    const auto start = Clock::now();
    try {
      session s({.helper = row.helper, .launch_limit = 60s, .relay_helper_output = false});
      ADD_FAILURE() << row.name << ": launched";
    } catch (const launch_error& error) {
      EXPECT_EQ(error.why, row.why) << row.name << ": " << error.what();
      EXPECT_NE(std::string(error.what()).find(row.says), std::string::npos)
          << row.name << ": " << error.what();
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
    }
    EXPECT_LT(Clock::now() - start, 30s) << row.name;
    ExpectNothingLeft();
  }
}

TEST_F(Session, AHelperThatNeverServesIsEndedAtTheLimit) {
  const std::string stuck = Script("stuck", "exec sleep 120\n");
  const auto start = Clock::now();
  try {
    session s({.helper = stuck, .launch_limit = 1000ms, .relay_helper_output = false});
    ADD_FAILURE() << "launched";
  } catch (const launch_error& error) {
    EXPECT_EQ(error.why, launch_error::reason::timed_out) << error.what();
    EXPECT_NE(std::string(error.what()).find("within 1 s"), std::string::npos) << error.what();
  }
  EXPECT_GE(Clock::now() - start, 1000ms);
  EXPECT_LT(Clock::now() - start, 20s);
  ExpectNothingLeft();
}

// No qem_util stands beside the test program, so a session given no path takes the one that
// the variable names; a variable that names nothing is told as such, not passed over.
TEST_F(Session, WithoutAPathTheHelperThatTheVariableNamesIsStarted) {
  {
    ScopedEnv named("QEM_UTIL_HELPER", QEM_UTIL_PATH);
    session s({.relay_helper_output = false});
    EXPECT_TRUE(Held(s.names().launch_key));
  }
  const std::string nothing = (root() / "nothing").string();
  ScopedEnv named("QEM_UTIL_HELPER", nothing.c_str());
  try {
    session s({.relay_helper_output = false});
    ADD_FAILURE() << "launched";
  } catch (const launch_error& error) {
    EXPECT_EQ(error.why, launch_error::reason::missing) << error.what();
    const std::string said = error.what();
    EXPECT_NE(said.find(nothing), std::string::npos) << said;
    EXPECT_NE(said.find("QEM_UTIL_HELPER"), std::string::npos) << said;
  }
  ExpectNothingLeft();
}

TEST_F(Session, TheHelperServesAndQuitsOnItsOwnWhenTheSessionGoes) {
  auto options = Real();
  options.quit_limit = 60s;  // a helper that had to be ended by a signal would take this long
  auto s = std::make_unique<session>(options);
  const pid_t pid = s->helper_pid();
  EXPECT_TRUE(Held(s->names().launch_key));
  s->send(command::create("p1", {.title = "One", .style = 3, .progress = 0.5}));
  s->send(command::set("p1", {.progress = 0.75}));
  EXPECT_TRUE(s->flush(30s));
  EXPECT_TRUE(s->helper_running());
  const auto start = Clock::now();
  s.reset();
  EXPECT_LT(Clock::now() - start, 30s);
  EXPECT_EQ(::kill(pid, 0), -1) << "still there, or not reaped";
  EXPECT_EQ(errno, ESRCH);
  ExpectNothingLeft();
}

TEST_F(Session, AHelperThatDiesIsReportedAndNotWaitedOn) {
  session s(Real());
  ::kill(s.helper_pid(), SIGKILL);
  const auto start = Clock::now();
  std::optional<event> e = s.next_event(120s);
  EXPECT_LT(Clock::now() - start, 60s);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->what, event::kind::helper_ended);
  EXPECT_EQ(e->exit_status, 128 + SIGKILL);
  EXPECT_FALSE(s.helper_running());
  EXPECT_THROW(s.send(command::remove("p1")), qem_client::helper_gone);
  // The news stays: a caller that asks again is not left waiting.
  e = s.poll();
  ASSERT_TRUE(e);
  EXPECT_EQ(e->what, event::kind::helper_ended);
}

TEST_F(Session, RefusedCommandsReachNothingAndTheOthersArriveInOrder) {
  session s({.helper = StandIn(), .relay_helper_output = false});
  s.send(command::create("p1", {.style = 3}));
  EXPECT_THROW(s.send(command::set("a\"b", {.progress = 0.1})), qem_client::command_refused);
  EXPECT_THROW(
      s.send(command::push("p1", {.buttons = std::vector<qem_client::button>{{"\\", "B"}}})),
      qem_client::command_refused);
  EXPECT_THROW(s.send_json(R"({"obj_id":"a\\b","cmd":"set"})"), qem_client::command_refused);
  s.send_json(R"({"obj_id":"p1","cmd":"set","extra":true})");
  ASSERT_TRUE(s.flush(30s));
  EXPECT_EQ(Received(), R"({"obj_id":"p1","cmd":"create","type":"wprogress","style":3})"
                        "\n"
                        R"({"obj_id":"p1","cmd":"set","extra":true})"
                        "\n");
}

TEST_F(Session, RepliesAreReadAsEventsInTheOrderSent) {
  session s({.helper = StandIn(), .relay_helper_output = false});
  EXPECT_FALSE(s.poll());
  EXPECT_FALSE(s.next_event(100ms)) << "nothing was sent";
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
}

}  // namespace
