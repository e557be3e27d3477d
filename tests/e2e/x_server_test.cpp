// The helper on a real X server: its own Xvfb, the xcb platform, no window manager. A window that
// a command creates is mapped with its title; after garbage on the channel, of which it reports
// only the text nested too deeply, it still takes commands; a click from outside (xdotool) on
// its button sends the reply on the reply channel.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "channel/many_to_one_receiver.h"
#include "helper_fixture.h"
#include "support/x_display.h"

namespace {

using namespace std::chrono_literals;
using qem_test::WaitUntil;

using XServer = qem_test::HelperTest;

TEST_F(XServer, WindowIsMappedWithItsTitleAndAClickFromOutsideIsAnswered) {
  if (auto missing = qem_test::XDisplay::Missing(); !missing.empty()) {
    GTEST_SKIP() << missing
                 << " is not installed (scripts/install-deps installs it); the helper "
                    "was not tried on a real X server";
  }
  // The xcb platform on a display of its own, without a session bus: the X platform would
  // otherwise try one that isn't there, and the bus library keeps what that failed attempt
  // allocated, which the leak check counts.
  qem_test::XDisplay x(root());
  ASSERT_TRUE(x.ready()) << x.Log();

  auto alive = lock_file::make("alive", log_file::make_null());
  auto replies = many_to_one::receiver::make("rep", log_file::make_null());
  auto helper = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return Occupied("launched"); }, 60s)) << Stderr();
  // Style 2: the message is the title, and the one button stands at the right of the top row,
  // from x 510 leftwards and y 20 to 42 of the client area. Garbage comes between the create
  // and the set that gives the title looked for.
  Send(
      {R"({"obj_id":"x1","cmd":"create","type":"wprogress","style":2,"message":"First",)"
       R"("progress":0.5,"btn_spec":[{"id":"go","text":"Go"}]})",
       "not json", R"({"pad":")" + std::string(1 << 20, 'x') + R"("})",
       R"({"obj_id":"x1","cmd":"set","a":)" + std::string(1000, '[') + std::string(1000, ']') + "}",
       R"({"obj_id":"x1","cmd":"set","message":"After garbage"})"});
  std::string window;
  ASSERT_TRUE(WaitUntil([&] { return !(window = x.MappedWindow("After garbage")).empty(); }, 60s))
      << Stderr();
  // Of the garbage only the text nested too deeply is worth a line.
  const std::string said = Stderr();
  EXPECT_NE(said.find("qem_util: JSON nested too deeply\n"), std::string::npos) << said;
  EXPECT_EQ(said.find("qem_util:"), said.rfind("qem_util:")) << said;

  // Without a window manager the client area is the window itself. A click that comes before
  // the window takes input is lost, so it is repeated until a reply comes.
  std::string reply;
  for (int click = 0; click < 10 && reply.empty(); ++click) {
    ASSERT_TRUE(x.Click(window, 500, 31));
    WaitUntil([&] { return !(reply = replies->op()->read()).empty(); }, 6s);
  }
  EXPECT_EQ(reply, R"({"obj_id":"x1","cmd":"pressed","btn_id":"go"})");
  alive.reset();
  EXPECT_EQ(helper.Wait(30s), 0) << Stderr();
}

}  // namespace
