// How soon accessibility clients hear of a change: the time from the start of a "set" command to
// the accessibility event for its change (a new message, title, value, or a bar turning busy),
// median and worst of 50 each. In process, on the xcb platform with the accessibility bridge
// switched on: the benchmark runs itself under a session bus of its own (dbus-run-session) and
// starts its own Xvfb, which ends with it. The event is caught where Qt hands it to the bridge,
// so the figure leaves out the bridge's message to the screen reader.

#include <unistd.h>

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "json/tree_dictionary.h"
#include "platform/run_loop.h"
#include "progress/wprogress.h"
#include "support/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;

class NoReplies : public message_forwarder {
 public:
  void write(const std::string&) override {}
};

// The first event of the kind looked for since the last Expect, and when it came.
struct Seen {
  QAccessible::Event kind = QAccessible::InvalidEvent;
  QObject* source = nullptr;
  Clock::time_point at{};
  bool seen = false;
} g_seen;

void Expect(QAccessible::Event kind, QObject* source) {
  g_seen = {kind, source, {}, false};
}

void OnEvent(QAccessibleEvent* event) {
  if (g_seen.seen || event->type() != g_seen.kind || event->object() != g_seen.source) return;
  g_seen.at = Clock::now();
  g_seen.seen = true;
}

// Starts Xvfb on a display it picks; with -terminate it ends when its last client (this
// process) goes. Gives the display's name, or "".
std::string StartXvfb() {
  FILE* out = popen("exec Xvfb -displayfd 1 -terminate -nolisten tcp 2>/dev/null", "r");
  char number[32] = {};
  if (!out || !std::fgets(number, sizeof number, out)) return "";
  return ":" + std::string(number, std::strcspn(number, "\n"));
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QEM_BENCH_OWN_BUS")) {
    setenv("QEM_BENCH_OWN_BUS", "1", 1);
    std::vector<char*> args = {const_cast<char*>("dbus-run-session"), const_cast<char*>("--")};
    args.insert(args.end(), argv, argv + argc);
    args.push_back(nullptr);
    execvp("dbus-run-session", args.data());
    std::perror("accessibility_bench: dbus-run-session (package dbus) is needed");
    return 1;
  }
  const std::string display = StartXvfb();
  if (display.empty()) {
    std::fputs("accessibility_bench: Xvfb could not be started\n", stderr);
    return 1;
  }
  qem_test::PrivateFolders folders;
  setenv("DISPLAY", display.c_str(), 1);
  setenv("QT_QPA_PLATFORM", "xcb", 1);
  setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
  // The accessibility bus is started on demand; Qt's bridge switches on once it is there.
  std::system(
      "dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus "
      "org.a11y.Bus.GetAddress >/dev/null");
  platform::DesktopApplication application(argc, argv);
  QElapsedTimer waited;
  waited.start();
  while (!QAccessible::isActive() && waited.elapsed() < 30000) QApplication::processEvents();
  if (!QAccessible::isActive()) {
    std::fputs("accessibility_bench: the accessibility bridge did not switch on\n", stderr);
    return 1;
  }
  QAccessible::installUpdateHandler(OnEvent);

  wProgress w("a1",
              JSON::JSONStringToTreeDictionary(
                  R"({"style":3,"title":"Backup","message":"Copying","progress":0.25,)"
                  R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})"),
              std::make_shared<NoReplies>());
  w.Show();
  for (int i = 0; i < 20; ++i) QApplication::processEvents();

  struct Change {
    const char* name;
    const char* first;  // two "set" commands, taken by turns, each a change
    const char* second;
    QAccessible::Event kind;
    QObject* source;
  };
  QObject* bar = w.ProgressBar1().Widget();
  const Change changes[] = {
      {"message", R"({"cmd":"set","message":"Step 1"})", R"({"cmd":"set","message":"Step 2"})",
       QAccessible::NameChanged, w.Label1().Widget()},
      {"title", R"({"cmd":"set","title":"Backup A"})", R"({"cmd":"set","title":"Backup B"})",
       QAccessible::NameChanged, w.Frame()},
      {"value", R"({"cmd":"set","progress":0.5})", R"({"cmd":"set","progress":0.75})",
       QAccessible::ValueChanged, bar},
      {"busy on and off", R"({"cmd":"set","progress":-1})", R"({"cmd":"set","progress":0.5})",
       QAccessible::StateChanged, bar},
  };
  std::printf("From the start of a \"set\" to the accessibility event for its change, 50 each:\n");
  std::printf("%-16s %10s %10s\n", "change", "median ms", "worst ms");
  for (const Change& change : changes) {
    const auto first = JSON::JSONStringToTreeDictionary(change.first);
    const auto second = JSON::JSONStringToTreeDictionary(change.second);
    std::vector<double> ms;
    for (int i = 0; i < 50; ++i) {
      Expect(change.kind, change.source);
      const auto start = Clock::now();
      w.cmd(i % 2 ? second : first);
      if (!g_seen.seen) {
        std::fprintf(stderr, "accessibility_bench: no event for the %s\n", change.name);
        return 1;
      }
      ms.push_back(std::chrono::duration<double, std::milli>(g_seen.at - start).count());
      QApplication::processEvents();
    }
    std::sort(ms.begin(), ms.end());
    std::printf("%-16s %10.3f %10.3f\n", change.name, (ms[24] + ms[25]) / 2, ms.back());
  }
  QAccessible::installUpdateHandler(nullptr);
  return 0;
}
