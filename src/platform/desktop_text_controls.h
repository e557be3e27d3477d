#pragma once
// The controls that take typed text: a one-line text field and a multi-line text area. Their
// text is kept as it was written, byte for byte, also where the widget shows it otherwise
// (bytes that are no UTF-8 show as U+FFFD); once the user edits it, a read gives the widget's
// text in UTF-8, exactly as typed. Neither has a length limit. Every write is counted; see
// DesktopUIControl. Main thread only.

#include <string>

#include "platform/desktop_ui_control.h"

class QLineEdit;
class QPlainTextEdit;
class QString;

namespace platform {

class DesktopWindow;

// What both controls share: the kept text and how it follows the user's edits.
class DesktopTextControl : public DesktopUIControl {
 public:
  ~DesktopTextControl() override;

  const std::string& Text() const noexcept { return text_; }
  void Text(std::string value);

 protected:
  DesktopTextControl(QWidget* widget) : DesktopUIControl(widget, -1) {}
  // To be called on every change of the widget's text: unless the change is a write of ours,
  // the kept text becomes the widget's.
  void Edited();

 private:
  virtual void Show(const QString& text) = 0;
  virtual QString Shown() const = 0;

  std::string text_;
  bool writing_ = false;
};

// A one-line text field with a frame.
class DesktopTextField : public DesktopTextControl {
 public:
  explicit DesktopTextField(DesktopWindow& window);

 private:
  void Show(const QString& text) override;
  QString Shown() const override;
  QLineEdit* field() const;
};

// A multi-line plain-text area with a frame: lines wrap at its width and a vertical scroll bar
// comes when the text is taller than the area. Return starts a new line ("\n"); Tab moves the
// focus on, as in the other controls.
class DesktopTextArea : public DesktopTextControl {
 public:
  explicit DesktopTextArea(DesktopWindow& window);

 private:
  void Show(const QString& text) override;
  QString Shown() const override;
  QPlainTextEdit* area() const;
};

}  // namespace platform
