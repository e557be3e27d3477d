#include "platform/desktop_window.h"

#include <algorithm>
#include <functional>

#include <QAccessible>
#include <QMenuBar>
#include <QVBoxLayout>
#include <QWidget>

#include "platform/control_font.h"
#include "platform/desktop_menu.h"
#include "platform/desktop_ui_control.h"
#include "platform/event_guard.h"
#include "platform/run_loop.h"
#include "platform/window_widget.h"

namespace platform {

namespace {
std::shared_ptr<DesktopMenuBar> CarriedMenuBar(DesktopWindow::Type type) {
#ifdef __APPLE__
  // The screen's menu bar shows the application's; no window carries one.
  (void)type;
  return nullptr;
#else
  if (type != DesktopWindow::Type::Document || !DesktopApplication::Instance()) return nullptr;
  return DesktopApplication::Instance()->MenuBar();
#endif
}
}  // namespace

DesktopWindow::DesktopWindow(Type type)
    : frame_(std::make_unique<WindowWidget>(type == Type::FloatingGlobal, [this] { Closing(); })),
      menu_bar_(CarriedMenuBar(type)) {
  if (type == Type::FloatingGlobal) {
    // A floating window stays on the screen while another application is active, and coming
    // on the screen never takes the focus from it: the user turns to the window when they will.
    frame_->setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    frame_->setAttribute(Qt::WA_ShowWithoutActivating);
  }
  if (menu_bar_) {
    // The menu bar above, the client area below it with the controls; the frame's size limits
    // follow the client area's.
    auto* layout = new QVBoxLayout(frame_.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetMinAndMaxSize);
    menu_bar_widget_ = MakeMenuBar(menu_bar_, frame_.get());
    layout->setMenuBar(menu_bar_widget_);
    client_ = new QWidget(frame_.get());
    layout->addWidget(client_);
  } else {
    client_ = frame_.get();
  }
  ApplySize();
}

DesktopWindow::~DesktopWindow() = default;

QWidget* DesktopWindow::Frame() const noexcept {
  return frame_.get();
}

void DesktopWindow::Title(std::string value) {
  writes_.Count(Property::Title);
  title_ = std::move(value);
  // Qt reads "[*]" as the modified marker; doubled it shows as itself.
  QString shown = QString::fromUtf8(title_.data(), std::ssize(title_));
  shown.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
  frame_->setWindowTitle(shown);
  // The title names the window for accessibility clients; Qt doesn't tell them it changed.
  QAccessibleEvent renamed(frame_.get(), QAccessible::NameChanged);
  QAccessible::updateAccessibility(&renamed);
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
  frame_->raise();
}

void DesktopWindow::ControlOrder(const std::vector<const DesktopUIControl*>& controls) {
  std::vector<QWidget*> widgets;
  for (const DesktopUIControl* control : controls) {
    if (control && control->Widget()) widgets.push_back(control->Widget());
  }
  frame_->SetOrder(std::move(widgets));
}

void DesktopWindow::Close() {
  Closing();
  frame_->hide();
}

void DesktopWindow::Closing() {
  if (closed_) return;
  closed_ = true;
  GuardEvent([this] { Event_Closing(); });
}

void DesktopWindow::ApplySize() {
  // A maximum below the minimum counts as the minimum.
  const int min_w = ToWidgetSize(min_width_), min_h = ToWidgetSize(min_height_);
  const int max_w = std::max(min_w, ToWidgetSize(max_width_));
  const int max_h = std::max(min_h, ToWidgetSize(max_height_));
  const int w = std::clamp(ToWidgetSize(width_), min_w, max_w);
  const int h = std::clamp(ToWidgetSize(height_), min_h, max_h);
  if (resizeable_) {
    client_->setMinimumSize(min_w, min_h);
    client_->setMaximumSize(max_w, max_h);
    client_->resize(w, h);
  } else {
    client_->setFixedSize(w, h);
  }
  if (client_ != frame_.get()) {
    // The frame is the client area with the menu bar on top, as wide as the client area.
    frame_->layout()->activate();
    const int bar = menu_bar_widget_->heightForWidth(w);
    frame_->resize(w, h + (bar > 0 ? bar : menu_bar_widget_->sizeHint().height()));
  }
}

void DesktopWindow::ApplyVisible() {
  if (opened_ && !closed_) frame_->setVisible(visible_);
}

}  // namespace platform
