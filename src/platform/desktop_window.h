#pragma once
// A top-level window over a Qt widget. Like the controls, it keeps every property value written
// to it and counts every write: a read gives what was written even where Qt shows something else
// (a Height below MinimumHeight shows as MinimumHeight). The code never moves a window: the
// platform places it when it first comes on the screen. A document window carries the
// application's menu bar above its client area, except on macOS, where the menu bar is the
// screen's. Main thread only.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/write_counts.h"

class QMenuBar;
class QWidget;

namespace platform {

class DesktopMenuBar;
class DesktopUIControl;
class WindowWidget;

class DesktopWindow {
 public:
  enum class Type {
    // An ordinary window with the platform's frame and buttons; the user can close it.
    Document,
    // Floats above the windows of all applications; a title bar without close, minimise or
    // maximise buttons; no parent. A request to close it from outside is refused.
    FloatingGlobal,
  };

  // Makes the window, not yet on the screen: until Open or Show, writes are only recorded. A
  // document window takes the application's menu bar as it is now (see MenuBar).
  explicit DesktopWindow(Type type);
  virtual ~DesktopWindow();
  DesktopWindow(const DesktopWindow&) = delete;
  DesktopWindow& operator=(const DesktopWindow&) = delete;

  const std::string& Title() const noexcept { return title_; }
  void Title(std::string value);
  // True while the window is meant to be on the screen (also before Open, from the design).
  bool Visible() const noexcept { return visible_; }
  void Visible(bool value);
  // The client area's size in points. Qt is given the size clamped to the minimum and maximum.
  std::int64_t Width() const noexcept { return width_; }
  void Width(std::int64_t value);
  std::int64_t Height() const noexcept { return height_; }
  void Height(std::int64_t value);
  std::int64_t MinimumWidth() const noexcept { return min_width_; }
  void MinimumWidth(std::int64_t value);
  std::int64_t MinimumHeight() const noexcept { return min_height_; }
  void MinimumHeight(std::int64_t value);
  std::int64_t MaximumWidth() const noexcept { return max_width_; }
  void MaximumWidth(std::int64_t value);
  std::int64_t MaximumHeight() const noexcept { return max_height_; }
  void MaximumHeight(std::int64_t value);
  // False: the user can't change the size; the code still can.
  bool Resizeable() const noexcept { return resizeable_; }
  void Resizeable(bool value);

  // Ends the making of the window: from now on it is on the screen whenever Visible is true.
  void Open();
  // Opens the window if needed, makes Visible true and brings it to the front; a floating window
  // is not made active by it.
  void Show();
  // Takes the window off the screen for good: it shows no more and takes no more input. The
  // object and its controls live on until their owner drops them. Runs Event_Closing first.
  void Close();
  bool Closed() const noexcept { return closed_; }

  // The controls in the order a user meets them: read out in this order by accessibility clients
  // (screen readers), which reach no control left out of it and none that is hidden, and passed
  // through in this order by Tab and Shift+Tab. The cancel key (Esc; Cmd+. on macOS) presses the
  // first visible, enabled button of the order, as a click would. Until it is set, clients read
  // the controls as Qt lists them and the cancel key does nothing. No property write: not
  // counted.
  void ControlOrder(const std::vector<const DesktopUIControl*>& controls);

  // The Closing event: runs once, through the event guard, when the window closes, by Close or
  // because the user closed a document window. The window goes in any case.
  virtual void Event_Closing() {}

  // The menu bar this window carries above its client area, or nil: a document window made
  // while the application had one carries it, except on macOS; other windows never do.
  const std::shared_ptr<DesktopMenuBar>& MenuBar() const noexcept { return menu_bar_; }

  const WriteCounts& Writes() const noexcept { return writes_; }
  void ResetWrites() noexcept { writes_.Reset(); }

  // The client area's widget: the parent of the controls, Width x Height. Without a menu bar it
  // is the top-level widget itself.
  QWidget* Widget() const noexcept { return client_; }
  // The top-level widget: the client area with the menu bar above it, if the window has one.
  // For grabbing and driving the whole window in tests.
  QWidget* Frame() const noexcept;

 private:
  void ApplySize();
  void ApplyVisible();
  void Closing();

  std::unique_ptr<WindowWidget> frame_;
  QWidget* client_ = nullptr;
  QMenuBar* menu_bar_widget_ = nullptr;
  std::shared_ptr<DesktopMenuBar> menu_bar_;
  std::string title_;
  bool visible_ = true;
  std::int64_t width_ = 100, height_ = 100;
  std::int64_t min_width_ = 0, min_height_ = 0;
  std::int64_t max_width_ = 32000, max_height_ = 32000;
  bool resizeable_ = true;
  bool opened_ = false;
  bool closed_ = false;
  WriteCounts writes_;
};

}  // namespace platform
