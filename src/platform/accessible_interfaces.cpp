// What accessibility clients (screen readers; AT-SPI on Linux) are told of our windows and
// progress bars, beyond what Qt tells of its widgets by itself.

#include <QAccessible>
#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QProgressBar>
#include <algorithm>

#include "platform/window_widget.h"

namespace platform {

namespace {

// A window, named by its title. Once its owner has set the order of its controls, its children
// are the controls of that order that are not hidden, in that order; a hidden one is no child.
class AccessibleWindow : public QAccessibleWidget {
 public:
  explicit AccessibleWindow(WindowWidget* window)
      : QAccessibleWidget(window, QAccessible::Window) {}

  int childCount() const override {
    if (!frame()->Ordered()) return QAccessibleWidget::childCount();
    return static_cast<int>(frame()->Reachable().size());
  }

  QAccessibleInterface* child(int index) const override {
    if (!frame()->Ordered()) return QAccessibleWidget::child(index);
    const auto reachable = frame()->Reachable();
    if (index < 0 || index >= static_cast<int>(reachable.size())) return nullptr;
    return QAccessible::queryAccessibleInterface(reachable[static_cast<std::size_t>(index)]);
  }

  int indexOfChild(const QAccessibleInterface* child) const override {
    if (!frame()->Ordered()) return QAccessibleWidget::indexOfChild(child);
    const auto reachable = frame()->Reachable();
    const auto it =
        std::find(reachable.begin(), reachable.end(), child ? child->object() : nullptr);
    return it == reachable.end() ? -1 : static_cast<int>(it - reachable.begin());
  }

 private:
  WindowWidget* frame() const { return static_cast<WindowWidget*>(widget()); }
};

// A progress bar with its value on its scale. A bar with the range 0..0 is busy: it says so in
// its state and its value text, and its value is 0 whatever came before.
class AccessibleBar : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleBar(QProgressBar* bar) : QAccessibleWidget(bar, QAccessible::ProgressBar) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.busy = busy();
    return state;
  }

  QString text(QAccessible::Text kind) const override {
    if (kind == QAccessible::Value) return busy() ? QStringLiteral("busy") : bar()->text();
    return QAccessibleWidget::text(kind);
  }

  QVariant currentValue() const override { return busy() ? 0 : bar()->value(); }
  void setCurrentValue(const QVariant&) override {}  // the program sets it, never the user
  QVariant maximumValue() const override { return bar()->maximum(); }
  QVariant minimumValue() const override { return bar()->minimum(); }
  QVariant minimumStepSize() const override { return 0; }

 private:
  QProgressBar* bar() const { return static_cast<QProgressBar*>(widget()); }
  bool busy() const { return bar()->minimum() == 0 && bar()->maximum() == 0; }
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object) {
  if (auto* window = dynamic_cast<WindowWidget*>(object)) return new AccessibleWindow(window);
  if (auto* bar = qobject_cast<QProgressBar*>(object)) return new AccessibleBar(bar);
  return nullptr;
}

}  // namespace

void InstallAccessibleInterfaces() {
  // Qt keeps one copy of a factory however often it is installed.
  QAccessible::installFactory(MakeInterface);
}

}  // namespace platform
