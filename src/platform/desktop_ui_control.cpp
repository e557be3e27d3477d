#include "platform/desktop_ui_control.h"

#include <QWidget>

#include "platform/control_font.h"

namespace platform {

DesktopUIControl::DesktopUIControl(QWidget* widget, std::int64_t index)
    : widget_(widget), index_(index) {
  ApplyFont();
}

DesktopUIControl::~DesktopUIControl() {
  // The window may already have taken its children with it.
  delete widget_.data();
}

QWidget* DesktopUIControl::Widget() const noexcept {
  return widget_.data();
}

void DesktopUIControl::Left(std::int64_t value) {
  Count(Property::Left);
  left_ = value;
  ApplyGeometry();
}

void DesktopUIControl::Top(std::int64_t value) {
  Count(Property::Top);
  top_ = value;
  ApplyGeometry();
}

void DesktopUIControl::Width(std::int64_t value) {
  Count(Property::Width);
  width_ = value;
  ApplyGeometry();
}

void DesktopUIControl::Height(std::int64_t value) {
  Count(Property::Height);
  height_ = value;
  ApplyGeometry();
}

void DesktopUIControl::Visible(bool value) {
  Count(Property::Visible);
  visible_ = value;
  if (widget_) widget_->setVisible(value);
}

void DesktopUIControl::Enabled(bool value) {
  Count(Property::Enabled);
  enabled_ = value;
  if (widget_) widget_->setEnabled(value);
}

void DesktopUIControl::FontName(std::string value) {
  Count(Property::FontName);
  font_name_ = std::move(value);
  ApplyFont();
}

void DesktopUIControl::FontSize(float value) {
  Count(Property::FontSize);
  font_size_ = value;
  ApplyFont();
}

void DesktopUIControl::AccessibleName(std::string value) {
  if (value == accessible_name_) return;
  accessible_name_ = std::move(value);
  // Qt tells accessibility clients of the new name.
  if (widget_)
    widget_->setAccessibleName(
        QString::fromUtf8(accessible_name_.data(), std::ssize(accessible_name_)));
}

void DesktopUIControl::ApplyGeometry() {
  if (!widget_) return;
  widget_->setGeometry(ToWidgetCoordinate(left_), ToWidgetCoordinate(top_), ToWidgetSize(width_),
                       ToWidgetSize(height_));
}

void DesktopUIControl::ApplyFont() {
  if (widget_) widget_->setFont(ControlFont(font_name_, font_size_));
}

}  // namespace platform
