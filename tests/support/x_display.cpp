#include "support/x_display.h"

#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <sstream>

namespace qem_test {

using namespace std::chrono_literals;

std::string XDisplay::Missing() {
  for (const std::string program : {"Xvfb", "xdotool"}) {
    if (std::system(("command -v " + program + " >/dev/null").c_str()) != 0) return program;
  }
  return "";
}

XDisplay::XDisplay(const std::filesystem::path& folder, const std::string& screen)
    // Xvfb picks a free display and writes its number to its output.
    : folder_(folder),
      server_({"Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", screen}, folder,
              "xvfb") {
  std::string seen;
  if (!WaitUntil([&] { return (seen = server_.Out()).find('\n') != seen.npos; }, 60s)) return;
  name_ = std::string(":").append(seen, 0, seen.find('\n'));
  environment_.push_back(std::make_unique<ScopedEnv>("QT_QPA_PLATFORM", "xcb"));
  environment_.push_back(std::make_unique<ScopedEnv>("DISPLAY", name_.c_str()));
  environment_.push_back(std::make_unique<ScopedEnv>("DBUS_SESSION_BUS_ADDRESS", "disabled:"));
}

XDisplay::~XDisplay() {
  environment_.clear();
  // SIGTERM, so that Xvfb removes its lock and socket files.
  server_.Kill(SIGTERM);
  server_.Wait(30s);
}

std::string XDisplay::MappedWindow(const std::string& title) const {
  const Ran found =
      Run({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"}, folder_);
  return found.status == 0 ? found.out.substr(0, found.out.find('\n')) : "";
}

bool XDisplay::Click(const std::string& window, int x, int y) const {
  return Run({"xdotool", "mousemove", "--window", window, std::to_string(x), std::to_string(y),
              "click", "1"},
             folder_)
             .status == 0;
}

std::optional<std::pair<int, int>> ButtonAt(const std::string& places_tool,
                                            const std::filesystem::path& folder,
                                            const std::string& create, const std::string& id) {
  std::istringstream lines(Run({places_tool, "--places", create}, folder).out);
  std::string name;
  for (int x, y; lines >> name >> x >> y;) {
    if (name == id) return std::make_pair(x, y);
  }
  return std::nullopt;
}

}  // namespace qem_test
