// The helper on a real X server: its own Xvfb, the xcb platform, no window manager. A window that
// a command creates is mapped with its title; after garbage on the channel it still takes
// commands; a click from outside (xdotool) on its button sends the reply on the reply channel.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "channel/many_to_one_receiver.h"
#include "helper_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::ReadFile;
using qem_test::Spawn;
using qem_test::WaitUntil;

// The full path of a program on PATH, or "".
std::string OnPath(const std::string& program) {
  std::istringstream path(std::getenv("PATH") ? std::getenv("PATH") : "");
  for (std::string dir; std::getline(path, dir, ':');) {
    std::string candidate = dir + "/" + program;
    if (!dir.empty() && ::access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return "";
}

class XServer : public qem_test::HelperTest {
 protected:
  // Runs xdotool; gives its exit status, and its output in `out`.
  int Xdotool(const std::vector<std::string>& args, std::string& out) {
    std::vector<std::string> argv = {xdotool_};
    argv.insert(argv.end(), args.begin(), args.end());
    const auto file = root() / "xdotool.out";
    int status = Spawn(argv, {.stdout_path = file, .stderr_path = "/dev/null"}).Wait(30s);
    out = ReadFile(file);
    return status;
  }
  // The id of the mapped window with exactly this title, or "".
  std::string MappedWindow(const std::string& title) {
    std::string out;
    if (Xdotool({"search", "--onlyvisible", "--name", "^" + title + "$"}, out) != 0) return "";
    return out.substr(0, out.find('\n'));
  }

  std::string xdotool_ = OnPath("xdotool");
};

// Xvfb ended with SIGTERM, so that it removes its lock and socket files.
struct XvfbProcess {
  qem_test::Child child;
  ~XvfbProcess() {
    child.Kill(SIGTERM);
    child.Wait(30s);
  }
};

TEST_F(XServer, WindowIsMappedWithItsTitleAndAClickFromOutsideIsAnswered) {
  const std::string xvfb = OnPath("Xvfb");
  if (xvfb.empty()) {
    GTEST_SKIP() << "Xvfb is not installed (scripts/install-deps installs it); the helper was "
                    "not tried on a real X server";
  }
  ASSERT_FALSE(xdotool_.empty()) << "xdotool is needed beside Xvfb (scripts/install-deps)";
  // Xvfb picks a free display and writes its number to its output.
  const auto number = root() / "display";
  XvfbProcess x_server{
      Spawn({xvfb, "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1024x768x24"},
            {.stdout_path = number, .stderr_path = root() / "xvfb.txt"})};
  std::string display;
  ASSERT_TRUE(
      WaitUntil([&] { return (display = ReadFile(number)).find('\n') != display.npos; }, 60s))
      << ReadFile(root() / "xvfb.txt");
  display = ":" + display.substr(0, display.find('\n'));
  qem_test::ScopedEnv platform("QT_QPA_PLATFORM", "xcb");
  qem_test::ScopedEnv display_env("DISPLAY", display.c_str());
  // No session bus, said plainly: the X platform would otherwise try one that isn't there, and
  // the bus library keeps what that failed attempt allocated, which the leak check counts.
  qem_test::ScopedEnv no_bus("DBUS_SESSION_BUS_ADDRESS", "disabled:");

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
  ASSERT_TRUE(WaitUntil([&] { return !(window = MappedWindow("After garbage")).empty(); }, 60s))
      << Stderr();

  // Without a window manager the client area is the window itself. A click that comes before
  // the window takes input is lost, so it is repeated until a reply comes.
  std::string reply, ignored;
  for (int click = 0; click < 10 && reply.empty(); ++click) {
    ASSERT_EQ(Xdotool({"mousemove", "--window", window, "500", "31", "click", "1"}, ignored), 0);
    WaitUntil([&] { return !(reply = replies->op()->read()).empty(); }, 6s);
  }
  EXPECT_EQ(reply, R"({"obj_id":"x1","cmd":"pressed","btn_id":"go"})");
  alive.reset();
  EXPECT_EQ(helper.Wait(30s), 0) << Stderr();
}

}  // namespace
