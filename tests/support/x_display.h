#pragma once
// A private X server for tests and benchmarks that need a real one: Xvfb on a display it picks
// itself, with the environment for programs started meanwhile (the xcb platform, that display,
// no session bus), and xdotool to look at windows and press buttons from outside, as a user
// would.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/scoped_env.h"

namespace qem_test {

class XDisplay {
 public:
  // What is missing to run one ("Xvfb", "xdotool"), or "" when both are installed.
  static std::string Missing();

  // Starts Xvfb with a screen of `screen` (e.g. "1024x768x24"), its files in `folder`, and waits
  // up to 60 s for it to take a display; ready() tells whether it did. While the object lives
  // QT_QPA_PLATFORM is "xcb", DISPLAY names the display and DBUS_SESSION_BUS_ADDRESS is
  // "disabled:" (no bus is there; a failed attempt would leave allocations behind). Ends Xvfb
  // with SIGTERM and restores the environment when it goes.
  XDisplay(const std::filesystem::path& folder, const std::string& screen = "1024x768x24");
  ~XDisplay();
  XDisplay(const XDisplay&) = delete;
  XDisplay& operator=(const XDisplay&) = delete;

  bool ready() const { return !name_.empty(); }
  const std::string& name() const { return name_; }
  // What Xvfb said, for a failure message.
  std::string Log() const;

  // Runs xdotool with the arguments, waiting up to 30 s; gives its exit status, its output in
  // `out`.
  int Xdotool(const std::vector<std::string>& args, std::string& out) const;
  // The id of a mapped window whose title is exactly `title`, or "".
  std::string MappedWindow(const std::string& title) const;
  // Clicks with the first button at (x, y) of the window's own area.
  bool Click(const std::string& window, int x, int y) const;

 private:
  std::filesystem::path folder_;
  Child server_;
  std::string name_;
  std::vector<std::unique_ptr<ScopedEnv>> environment_;
};

// The full path of a program on PATH, or "".
std::string OnPath(const std::string& program);

}  // namespace qem_test
