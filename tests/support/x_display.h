#pragma once
// A private X server (Xvfb on a display it picks itself) for the programs a test starts, and
// xdotool to find windows and press buttons from outside, as a user would.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/process.h"

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
  // What Xvfb said, for a failure message.
  std::string Log() const { return server_.Err(); }

  // The id of a mapped window whose title is exactly `title`, or "".
  std::string MappedWindow(const std::string& title) const;
  // Clicks with the first button at (x, y) of the window's own area; false if xdotool failed.
  bool Click(const std::string& window, int x, int y) const;

 private:
  std::filesystem::path folder_;
  Kept server_;
  std::string name_;
  std::vector<std::unique_ptr<ScopedEnv>> environment_;
};

// The centre (x, y) of button `id` in the client area of a window made from `create` (a "create"
// command's JSON), as `places_tool` (a progress window tool run with --places, its files in
// `folder`) prints where the layout places it; nullopt when the window shows no such button.
std::optional<std::pair<int, int>> ButtonAt(const std::string& places_tool,
                                            const std::filesystem::path& folder,
                                            const std::string& create, const std::string& id);

}  // namespace qem_test
