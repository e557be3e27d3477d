// The whole story on a real X server: the library launches the helper, a window comes with its
// title, changes with a set, shows a pushed question, a click from outside (as a user's) comes
// back as an event and drops the question, delete takes the window away, and the end of the
// session ends the helper.

#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <string>

#include "client/session.h"
#include "client_fixture.h"
#include "support/x_display.h"

namespace {

using namespace std::chrono_literals;
using qem_client::button;
using qem_client::command;
using qem_test::WaitUntil;

using XSession = qem_test::ClientTest;

TEST_F(XSession, CreateSetPushPressAndDeleteAsAUserSeesThem) {
  if (auto missing = qem_test::XDisplay::Missing(); !missing.empty()) {
    GTEST_SKIP() << missing << " is not installed (scripts/install-deps installs it)";
  }
  qem_test::XDisplay x(root());
  ASSERT_TRUE(x.ready()) << x.Log();
  auto s = std::make_unique<qem_client::session>(
      qem_client::launch_options{.helper = QEM_UTIL_PATH, .relay_helper_output = false});
  auto mapped = [&](const std::string& title) {
    std::string window;
    WaitUntil([&] { return !(window = x.MappedWindow(title)).empty(); }, 60s);
    return window;
  };

  s->send(command::create("p1", {.title = "Copying",
                                 .style = 3,
                                 .message = "Step 1",
                                 .progress = 0.25,
                                 .buttons = std::vector<button>{{"stop", "Stop"}}}));
  ASSERT_FALSE(mapped("Copying").empty());
  s->send(command::set("p1", {.title = "Copying files", .progress = 0.5}));
  ASSERT_FALSE(mapped("Copying files").empty());
  // Style 2: the message stands in the title bar and the one button at the right of the top row,
  // from x 510 leftwards and y 20 to 42 (no window manager: the client area is the window).
  s->send(command::push(
      "p1", {.style = 2, .message = "Replace it", .buttons = std::vector<button>{{"yes", "Yes"}}}));
  const std::string window = mapped("Replace it");
  ASSERT_FALSE(window.empty());
  // A click that comes before the window takes input is lost, so it is repeated until a reply.
  std::optional<qem_client::event> e;
  for (int click = 0; click < 10 && !e; ++click) {
    ASSERT_TRUE(x.Click(window, 500, 31));
    e = s->next_event(6s);
  }
  ASSERT_TRUE(e);
  EXPECT_TRUE(e->pressed());
  EXPECT_EQ(e->obj_id, "p1");
  EXPECT_EQ(e->btn_id, "yes");
  // The press dropped the question: the state below is back.
  EXPECT_FALSE(mapped("Copying files").empty());
  s->send(command::remove("p1"));
  EXPECT_TRUE(WaitUntil([&] { return x.MappedWindow("Copying files").empty(); }, 60s));
  const pid_t pid = s->helper_pid();
  s.reset();
  EXPECT_EQ(::kill(pid, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

}  // namespace
