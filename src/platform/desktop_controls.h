#pragma once
// The controls a window is built from: label, push button and progress bar. Each keeps the
// values written to it (a read gives what was written) and counts every write; see
// DesktopUIControl. Main thread only.

#include <cstdint>
#include <functional>
#include <string>

#include "platform/desktop_ui_control.h"

class QLabel;
class QPushButton;
class QProgressBar;

namespace platform {

class DesktopWindow;

// A multi-line, centred, plain-text label that can't be selected: its text wraps at its width.
class DesktopLabel : public DesktopUIControl {
 public:
  // Makes the label inside `window`; it lives as long as this object or the window.
  explicit DesktopLabel(DesktopWindow& window);

  const std::string& Text() const noexcept { return text_; }
  // Shown as plain text, never as markup.
  void Text(std::string value);

 private:
  QLabel* label() const;
  std::string text_;
};

// A push button. The caption is shown as it is written ("&" stays an ampersand).
class DesktopButton : public DesktopUIControl {
 public:
  // Makes the button inside `window` with its place in a control array (-1 for none).
  DesktopButton(DesktopWindow& window, std::int64_t index = -1);

  const std::string& Caption() const noexcept { return caption_; }
  void Caption(std::string value);

  // The handler of the Pressed event, given the button that was pressed. It runs on the main
  // thread through the event guard, to its end; an exception it throws is reported on stderr
  // and goes no further. A second call replaces the handler.
  void AddPressedHandler(std::function<void(DesktopButton&)> handler);

 private:
  QPushButton* button() const;
  std::string caption_;
  std::function<void(DesktopButton&)> pressed_;
};

// A horizontal bar from 0 to MaximumValue; Indeterminate shows a busy bar instead.
class DesktopProgressBar : public DesktopUIControl {
 public:
  explicit DesktopProgressBar(DesktopWindow& window);

  bool Indeterminate() const noexcept { return indeterminate_; }
  void Indeterminate(bool value);
  std::int64_t MaximumValue() const noexcept { return maximum_; }
  void MaximumValue(std::int64_t value);
  // Read back as written, also outside 0..MaximumValue; the bar shows the nearest end then.
  double Value() const noexcept { return value_; }
  void Value(double value);

 private:
  void Apply();
  QProgressBar* bar() const;
  bool indeterminate_ = false;
  std::int64_t maximum_ = 100;
  double value_ = 0;
};

}  // namespace platform
