#pragma once
// The controls a window is built from: label, push button, check box and progress bar. Each
// keeps the values written to it (a read gives what was written) and counts every write; see
// DesktopUIControl. Main thread only.

#include <cstdint>
#include <functional>
#include <string>

#include "platform/desktop_ui_control.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QProgressBar;

namespace platform {

class DesktopWindow;

// A plain-text label that can't be selected. One line, left-aligned and centred in its height,
// unless Multiline: then its text wraps at its width from the top.
class DesktopLabel : public DesktopUIControl {
 public:
  enum class Alignment { Default = 0, Left = 1, Center = 2, Right = 3 };

  // Makes the label inside `window`; it lives as long as this object or the window.
  explicit DesktopLabel(DesktopWindow& window);

  const std::string& Text() const noexcept { return text_; }
  // Shown as plain text, never as markup.
  void Text(std::string value);
  // Default is Left.
  Alignment TextAlignment() const noexcept { return alignment_; }
  void TextAlignment(Alignment value);
  bool Multiline() const noexcept { return multiline_; }
  void Multiline(bool value);

 private:
  void ApplyAlignment();
  QLabel* label() const;
  std::string text_;
  Alignment alignment_ = Alignment::Default;
  bool multiline_ = false;
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

// A check box with its caption beside it.
class DesktopCheckBox : public DesktopUIControl {
 public:
  explicit DesktopCheckBox(DesktopWindow& window);

  // Shown as it is written ("&" stays an ampersand).
  const std::string& Caption() const noexcept { return caption_; }
  void Caption(std::string value);
  // Checked or not, by the user's click or by a write.
  bool Value() const noexcept { return value_; }
  void Value(bool value);

  // The handler of the ValueChanged event, given the box. It runs whenever Value changes, by the
  // user or by a write (writing the value it has changes nothing), after Value has the new value,
  // through the event guard and to its end. A second call replaces the handler.
  void AddValueChangedHandler(std::function<void(DesktopCheckBox&)> handler);

 private:
  QCheckBox* box() const;
  std::string caption_;
  bool value_ = false;
  std::function<void(DesktopCheckBox&)> value_changed_;
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
