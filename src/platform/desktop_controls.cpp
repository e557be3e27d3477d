#include "platform/desktop_controls.h"

#include <algorithm>
#include <cmath>
#include <limits>

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
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  label->setTextInteractionFlags(Qt::NoTextInteraction);
  return label;
}

// Qt's bar holds an int; a bound past that range shows as the range's end.
int ToBarInt(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kMax = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, -kMax, kMax));
}
}  // namespace

DesktopLabel::DesktopLabel(DesktopWindow& window) : DesktopUIControl(MakeLabel(window), -1) {}

QLabel* DesktopLabel::label() const {
  return static_cast<QLabel*>(Widget());
}

void DesktopLabel::Text(std::string value) {
  Count(Property::Text);
  text_ = std::move(value);
  if (auto* l = label()) l->setText(QString::fromUtf8(text_.data(), std::ssize(text_)));
}

DesktopButton::DesktopButton(DesktopWindow& window, std::int64_t index)
    : DesktopUIControl(new QPushButton(window.Widget()), index) {
  button()->setAutoDefault(false);
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
  // A single "&" would mark a shortcut and vanish; doubled it shows as itself.
  QString shown = QString::fromUtf8(caption_.data(), std::ssize(caption_));
  shown.replace(QLatin1Char('&'), QLatin1String("&&"));
  if (auto* b = button()) b->setText(shown);
}

void DesktopButton::AddPressedHandler(std::function<void(DesktopButton&)> handler) {
  pressed_ = std::move(handler);
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
  if (indeterminate_) {
    // A range of 0..0 is Qt's busy bar.
    b->setRange(0, 0);
    return;
  }
  const int maximum = std::max(0, ToBarInt(static_cast<double>(maximum_)));
  b->setRange(0, maximum);
  b->setValue(std::clamp(ToBarInt(value_), 0, maximum));
}

}  // namespace platform
