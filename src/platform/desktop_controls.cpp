#include "platform/desktop_controls.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include "platform/desktop_window.h"
#include "platform/event_guard.h"

namespace platform {

namespace {
QLabel* MakeLabel(DesktopWindow& window) {
  auto* label = new QLabel(window.Widget());
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::NoTextInteraction);
  return label;
}

// A caption shown as written: a single "&" would mark a shortcut and vanish; doubled it shows as
// itself.
QString CaptionText(const std::string& caption) {
  QString shown = QString::fromUtf8(caption.data(), std::ssize(caption));
  shown.replace(QLatin1Char('&'), QLatin1String("&&"));
  return shown;
}

// Qt's bar holds an int; a bound past that range shows as the range's end.
int ToBarInt(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kMax = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, -kMax, kMax));
}
}  // namespace

DesktopLabel::DesktopLabel(DesktopWindow& window) : DesktopUIControl(MakeLabel(window), -1) {
  ApplyAlignment();
}

QLabel* DesktopLabel::label() const {
  return static_cast<QLabel*>(Widget());
}

void DesktopLabel::Text(std::string value) {
  Count(Property::Text);
  text_ = std::move(value);
  if (auto* l = label()) l->setText(QString::fromUtf8(text_.data(), std::ssize(text_)));
}

void DesktopLabel::TextAlignment(Alignment value) {
  Count(Property::TextAlignment);
  alignment_ = value;
  ApplyAlignment();
}

void DesktopLabel::Multiline(bool value) {
  Count(Property::Multiline);
  multiline_ = value;
  ApplyAlignment();
}

void DesktopLabel::ApplyAlignment() {
  QLabel* l = label();
  if (!l) return;
  Qt::Alignment horizontal = Qt::AlignLeft;
  if (alignment_ == Alignment::Center) horizontal = Qt::AlignHCenter;
  if (alignment_ == Alignment::Right) horizontal = Qt::AlignRight;
  l->setWordWrap(multiline_);
  l->setAlignment(horizontal | (multiline_ ? Qt::AlignTop : Qt::AlignVCenter));
}

DesktopButton::DesktopButton(DesktopWindow& window, std::int64_t index)
    : DesktopUIControl(new QPushButton(window.Widget()), index) {
  button()->setAutoDefault(false);
  // Tab reaches a button on every platform, not only where the platform's settings say so.
  button()->setFocusPolicy(Qt::StrongFocus);
  QObject::connect(button(), &QPushButton::clicked, [this] {
    if (pressed_) GuardEvent([this] { pressed_(*this); });
  });
}

QPushButton* DesktopButton::button() const {
  return static_cast<QPushButton*>(Widget());
}

void DesktopButton::Caption(std::string value) {
  Count(Property::Caption);
  caption_ = std::move(value);
  if (auto* b = button()) b->setText(CaptionText(caption_));
}

void DesktopButton::AddPressedHandler(std::function<void(DesktopButton&)> handler) {
  pressed_ = std::move(handler);
}

DesktopCheckBox::DesktopCheckBox(DesktopWindow& window)
    : DesktopUIControl(new QCheckBox(window.Widget()), -1) {
  // Qt reports a change by a click and by a write alike, and only a real change.
  QObject::connect(box(), &QCheckBox::toggled, [this](bool checked) {
    value_ = checked;
    if (value_changed_) GuardEvent([this] { value_changed_(*this); });
  });
}

QCheckBox* DesktopCheckBox::box() const {
  return static_cast<QCheckBox*>(Widget());
}

void DesktopCheckBox::Caption(std::string value) {
  Count(Property::Caption);
  caption_ = std::move(value);
  if (auto* b = box()) b->setText(CaptionText(caption_));
}

void DesktopCheckBox::Value(bool value) {
  Count(Property::Value);
  if (auto* b = box()) b->setChecked(value);
  value_ = value;
}

void DesktopCheckBox::AddValueChangedHandler(std::function<void(DesktopCheckBox&)> handler) {
  value_changed_ = std::move(handler);
}

DesktopProgressBar::DesktopProgressBar(DesktopWindow& window)
    : DesktopUIControl(new QProgressBar(window.Widget()), -1) {
  bar()->setTextVisible(false);
  Apply();
}

QProgressBar* DesktopProgressBar::bar() const {
  return static_cast<QProgressBar*>(Widget());
}

void DesktopProgressBar::Indeterminate(bool value) {
  Count(Property::Indeterminate);
  indeterminate_ = value;
  Apply();
}

void DesktopProgressBar::MaximumValue(std::int64_t value) {
  Count(Property::MaximumValue);
  maximum_ = value;
  Apply();
}

void DesktopProgressBar::Value(double value) {
  Count(Property::Value);
  value_ = value;
  Apply();
}

void DesktopProgressBar::Apply() {
  QProgressBar* b = bar();
  if (!b) return;
  // A range of 0..0 is Qt's busy bar.
  const auto busy = [b] { return b->minimum() == 0 && b->maximum() == 0; };
  const bool was_busy = busy();
  if (indeterminate_) {
    b->setRange(0, 0);
  } else {
    const int maximum = std::max(0, ToBarInt(static_cast<double>(maximum_)));
    b->setRange(0, maximum);
    b->setValue(std::clamp(ToBarInt(value_), 0, maximum));
  }
  if (busy() == was_busy || !b->isVisible()) return;
  // Qt tells accessibility clients of a new value, not of a bar that turns busy or stops being
  // busy: the state changes, and with it the value they are given.
  QAccessible::State busy_state;
  busy_state.busy = true;
  QAccessibleStateChangeEvent state_changed(b, busy_state);
  QAccessible::updateAccessibility(&state_changed);
  QAccessibleValueChangeEvent value_changed(b, busy() ? 0 : b->value());
  QAccessible::updateAccessibility(&value_changed);
}

}  // namespace platform
