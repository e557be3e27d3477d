#pragma once
// The base of the control wrappers: a Qt widget inside a window, with the properties every
// control has. Each property keeps the value written to it, and a read gives exactly that value,
// also where the widget shows something else (a negative width shows as 0). Every write is
// counted. Main thread only.

#include <cstdint>
#include <string>

#include <QPointer>

#include "platform/write_counts.h"

class QWidget;

namespace platform {

class DesktopUIControl {
 public:
  virtual ~DesktopUIControl();
  DesktopUIControl(const DesktopUIControl&) = delete;
  DesktopUIControl& operator=(const DesktopUIControl&) = delete;

  // Place and size in points, relative to the window's client area.
  std::int64_t Left() const noexcept { return left_; }
  void Left(std::int64_t value);
  std::int64_t Top() const noexcept { return top_; }
  void Top(std::int64_t value);
  std::int64_t Width() const noexcept { return width_; }
  void Width(std::int64_t value);
  std::int64_t Height() const noexcept { return height_; }
  void Height(std::int64_t value);
  // Shown inside its window; a hidden window shows none of its controls.
  bool Visible() const noexcept { return visible_; }
  void Visible(bool value);
  bool Enabled() const noexcept { return enabled_; }
  void Enabled(bool value);
  // The font the control draws with, and is measured with: "System" and a size of 0 mean the
  // application's default font (see TextMeasurer).
  const std::string& FontName() const noexcept { return font_name_; }
  void FontName(std::string value);
  float FontSize() const noexcept { return font_size_; }
  void FontSize(float value);

  // The name that accessibility clients (screen readers) read for the control where its own text
  // gives none, as for a bar; "" leaves the control's text to name it. A change is told to
  // them. No property write: not counted.
  const std::string& AccessibleName() const noexcept { return accessible_name_; }
  void AccessibleName(std::string value);

  // The place of the control in its control array, fixed when it is made; -1 for none.
  std::int64_t Index() const noexcept { return index_; }

  const WriteCounts& Writes() const noexcept { return writes_; }
  void ResetWrites() noexcept { writes_.Reset(); }

  // The widget, for grabbing and for driving it in tests; nil once the window has gone.
  QWidget* Widget() const noexcept;

 protected:
  // Takes `widget`, which must be a child of the window's widget; the control deletes it.
  DesktopUIControl(QWidget* widget, std::int64_t index);
  void Count(Property property) noexcept { writes_.Count(property); }

 private:
  void ApplyGeometry();
  void ApplyFont();

  QPointer<QWidget> widget_;
  std::int64_t index_;
  std::int64_t left_ = 0, top_ = 0, width_ = 0, height_ = 0;
  bool visible_ = true;
  bool enabled_ = true;
  std::string font_name_ = "System";
  float font_size_ = 0;
  std::string accessible_name_;
  WriteCounts writes_;
};

}  // namespace platform
