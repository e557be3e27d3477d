// Memory per open progress window: the resident size of this process with 0, 10 and 100 windows
// on the screen, each laid out and painted once. Run with QT_QPA_PLATFORM=offscreen (or on a
// display). Prints one line per count and the growth per window.

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <QApplication>

#include "json/tree_dictionary.h"
#include "platform/run_loop.h"
#include "progress/wprogress.h"

namespace {

class NoReplies : public message_forwarder {
 public:
  void write(const std::string&) override {}
};

// Resident set size in kB, from /proc.
long RssKb() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

std::unique_ptr<wProgress> MakeWindow(int i) {
  const std::string json =
      R"({"style":3,"title":"Backup )" + std::to_string(i) +
      R"(","message":"Copying 1,204 files to the backup disk","progress":0.25,)"
      R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})";
  auto w = std::make_unique<wProgress>(std::string("m").append(std::to_string(i)),
                                       JSON::JSONStringToTreeDictionary(json),
                                       std::make_shared<NoReplies>());
  w->Show();
  return w;
}

void Settle() {
  for (int i = 0; i < 5; ++i) QApplication::processEvents();
}

}  // namespace

int main(int argc, char** argv) {
  platform::DesktopApplication application(argc, argv);
  // One window made and dropped first, so that fonts and style are loaded before the baseline.
  MakeWindow(-1).reset();
  Settle();
  std::vector<std::unique_ptr<wProgress>> windows;
  const long base = RssKb();
  std::printf("windows    RSS kB   per window kB\n%7d %8ld %15s\n", 0, base, "-");
  for (int count : {10, 100}) {
    while (static_cast<int>(windows.size()) < count) windows.push_back(MakeWindow(windows.size()));
    Settle();
    const long rss = RssKb();
    std::printf("%7d %8ld %15.1f\n", count, rss, static_cast<double>(rss - base) / count);
  }
  return 0;
}
