#include "platform/window_widget.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QKeySequence>
#include <algorithm>

namespace platform {

namespace {
Qt::WindowFlags FlagsOf(bool floating) {
  if (!floating) return Qt::Window;
  return Qt::Window | Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
         Qt::WindowTitleHint;
}
}  // namespace

WindowWidget::WindowWidget(bool floating, std::function<void()> closing)
    : QWidget(nullptr, FlagsOf(floating)), floating_(floating), closing_(std::move(closing)) {
  InstallAccessibleInterfaces();
}

std::vector<QWidget*> WindowWidget::Reachable() const {
  std::vector<QWidget*> reachable;
  for (const auto& widget : order_) {
    if (widget && !widget->isHidden()) reachable.push_back(widget);
  }
  return reachable;
}

void WindowWidget::SetOrder(std::vector<QWidget*> widgets) {
  const auto same = [](QWidget* a, const QPointer<QWidget>& b) { return a == b.data(); };
  if (ordered_ && std::equal(widgets.begin(), widgets.end(), order_.begin(), order_.end(), same)) {
    return;
  }
  ordered_ = true;
  order_.assign(widgets.begin(), widgets.end());
  // Tab and Shift+Tab follow the order; a hidden widget is passed over.
  QWidget* previous = nullptr;
  for (QWidget* widget : widgets) {
    if (!(widget->focusPolicy() & Qt::TabFocus)) continue;
    if (previous) QWidget::setTabOrder(previous, widget);
    previous = widget;
  }
}

void WindowWidget::closeEvent(QCloseEvent* event) {
  if (floating_) {
    event->ignore();
    return;
  }
  QWidget::closeEvent(event);
  if (event->isAccepted()) closing_();
}

void WindowWidget::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Cancel)) {
    for (QWidget* widget : Reachable()) {
      auto* button = qobject_cast<QAbstractButton*>(widget);
      if (!button || !button->isEnabled()) continue;
      button->click();
      return;
    }
  }
  QWidget::keyPressEvent(event);
}

}  // namespace platform
