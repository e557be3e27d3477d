// The helper on a real X server (its own Xvfb, the xcb platform, no window manager): garbage on
// the channel, of which only the text nested too deeply is worth a line, leaves it serving, and
// a click from outside on a button where the layout puts it is answered on the reply channel.

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "channel/many_to_one_receiver.h"
#include "helper_fixture.h"
#include "support/x_display.h"

namespace {

using namespace std::chrono_literals;
using qem_test::WaitUntil;
using XServer = qem_test::HelperTest;

TEST_F(XServer, GarbageLeavesTheHelperServingAndAClickFromOutsideIsAnswered) {
  if (auto missing = qem_test::XDisplay::Missing(); !missing.empty()) {
    GTEST_SKIP() << missing << " is not installed (scripts/install-deps installs it)";
  }
  qem_test::XDisplay x(root());
  ASSERT_TRUE(x.ready()) << x.Log();
  auto alive = lock_file::make("alive", log_file::make_null());
  auto replies = many_to_one::receiver::make("rep", log_file::make_null());
  auto helper = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return qem_test::LockHeld("launched"); }, 60s)) << helper.Err();
  // Style 2: the message is the title; the garbage comes before the set that gives the title.
  const std::string create = R"({"obj_id":"x1","cmd":"create","type":"wprogress","style":2,)"
                             R"("message":"First","btn_spec":[{"id":"go","text":"Go"}]})";
  const auto go = qem_test::ButtonAt(QEM_PROGRESS_WINDOW, root(), create, "go");
  ASSERT_TRUE(go) << "no button go";
  qem_test::Send("cmd", {create, "not json", R"({"pad":")" + std::string(1 << 20, 'x') + R"("})",
                         R"({"obj_id":"x1","cmd":"set","a":)" + std::string(1000, '[') +
                             std::string(1000, ']') + "}",
                         R"({"obj_id":"x1","cmd":"set","message":"After garbage"})"});
  std::string window;
  ASSERT_TRUE(WaitUntil([&] { return !(window = x.MappedWindow("After garbage")).empty(); }, 60s))
      << helper.Err();
  const std::string said = helper.Err();
  EXPECT_NE(said.find("qem_util: JSON nested too deeply\n"), std::string::npos) << said;
  EXPECT_EQ(said.find("qem_util:"), said.rfind("qem_util:")) << said;
  // A click before the window takes input is lost: it is repeated until a reply comes.
  std::string reply;
  for (int click = 0; click < 10 && reply.empty(); ++click) {
    ASSERT_TRUE(x.Click(window, go->first, go->second));
    WaitUntil([&] { return !(reply = replies->op()->read()).empty(); }, 6s);
  }
  EXPECT_EQ(reply, R"({"obj_id":"x1","cmd":"pressed","btn_id":"go"})");
}

}  // namespace
