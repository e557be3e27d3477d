#include "platform/desktop_window.h"

#include <algorithm>

#include <QCloseEvent>
#include <QWidget>

#include "platform/control_font.h"

namespace platform {

namespace {
Qt::WindowFlags FlagsOf(DesktopWindow::Type type) {
  if (type == DesktopWindow::Type::Document) return Qt::Window;
  return Qt::Window | Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
         Qt::WindowTitleHint;
}

// The widget of a window. A floating window has no close box, and a window manager that shows
// one all the same, or a close key, can't take it away: only its owner closes it.
class WindowWidget : public QWidget {
 public:
  explicit WindowWidget(DesktopWindow::Type type) : QWidget(nullptr, FlagsOf(type)), type_(type) {}

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (type_ == DesktopWindow::Type::FloatingGlobal) {
      event->ignore();
    } else {
      QWidget::closeEvent(event);
    }
  }

 private:
  DesktopWindow::Type type_;
};
}  // namespace

DesktopWindow::DesktopWindow(Type type) : widget_(std::make_unique<WindowWidget>(type)) {
  // A floating window stays on the screen while another application is active.
  if (type == Type::FloatingGlobal) widget_->setAttribute(Qt::WA_MacAlwaysShowToolWindow);
  ApplySize();
}

DesktopWindow::~DesktopWindow() = default;

void DesktopWindow::Title(std::string value) {
  writes_.Count(Property::Title);
  title_ = std::move(value);
  // Qt reads "[*]" as the modified marker; doubled it shows as itself.
  QString shown = QString::fromUtf8(title_.data(), std::ssize(title_));
  shown.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
  widget_->setWindowTitle(shown);
}

void DesktopWindow::Visible(bool value) {
  writes_.Count(Property::Visible);
  visible_ = value;
  ApplyVisible();
}

void DesktopWindow::Width(std::int64_t value) {
  writes_.Count(Property::Width);
  width_ = value;
  ApplySize();
}

void DesktopWindow::Height(std::int64_t value) {
  writes_.Count(Property::Height);
  height_ = value;
  ApplySize();
}

void DesktopWindow::MinimumWidth(std::int64_t value) {
  writes_.Count(Property::MinimumWidth);
  min_width_ = value;
  ApplySize();
}

void DesktopWindow::MinimumHeight(std::int64_t value) {
  writes_.Count(Property::MinimumHeight);
  min_height_ = value;
  ApplySize();
}

void DesktopWindow::MaximumWidth(std::int64_t value) {
  writes_.Count(Property::MaximumWidth);
  max_width_ = value;
  ApplySize();
}

void DesktopWindow::MaximumHeight(std::int64_t value) {
  writes_.Count(Property::MaximumHeight);
  max_height_ = value;
  ApplySize();
}

void DesktopWindow::Resizeable(bool value) {
  writes_.Count(Property::Resizeable);
  resizeable_ = value;
  ApplySize();
}

void DesktopWindow::Open() {
  opened_ = true;
  ApplyVisible();
}

void DesktopWindow::Show() {
  if (closed_) return;
  opened_ = true;
  Visible(true);
  widget_->raise();
}

void DesktopWindow::Close() {
  closed_ = true;
  widget_->hide();
}

void DesktopWindow::ApplySize() {
  // A maximum below the minimum counts as the minimum.
  const int min_w = ToWidgetSize(min_width_), min_h = ToWidgetSize(min_height_);
  const int max_w = std::max(min_w, ToWidgetSize(max_width_));
  const int max_h = std::max(min_h, ToWidgetSize(max_height_));
  const int w = std::clamp(ToWidgetSize(width_), min_w, max_w);
  const int h = std::clamp(ToWidgetSize(height_), min_h, max_h);
  if (resizeable_) {
    widget_->setMinimumSize(min_w, min_h);
    widget_->setMaximumSize(max_w, max_h);
    widget_->resize(w, h);
  } else {
    widget_->setFixedSize(w, h);
  }
}

void DesktopWindow::ApplyVisible() {
  if (opened_ && !closed_) widget_->setVisible(visible_);
}

}  // namespace platform
