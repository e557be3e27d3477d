#pragma once
// The top-level widget behind a DesktopWindow, shared by the window wrapper and the interfaces
// through which accessibility clients see the window. Internal to the platform layer.

#include <QPointer>
#include <QWidget>
#include <functional>
#include <vector>

namespace platform {

class WindowWidget : public QWidget {
 public:
  // `floating`: no close box, and a request to close it from outside is refused: only its
  // owner closes it. Otherwise the window closes and calls `closing`.
  WindowWidget(bool floating, std::function<void()> closing);

  // The controls' widgets in the order a user meets them, or nothing: the order was never set.
  // A widget that has gone drops out.
  const std::vector<QPointer<QWidget>>& Order() const noexcept { return order_; }
  bool Ordered() const noexcept { return ordered_; }
  // Those of Order that are not hidden: what an accessibility client can reach.
  std::vector<QWidget*> Reachable() const;
  // Sets the order and chains Tab through its focusable widgets in that order. Qt tells
  // accessibility clients of a widget shown or hidden, and so of what they can reach.
  void SetOrder(std::vector<QWidget*> widgets);

 protected:
  void closeEvent(QCloseEvent* event) override;
  // The cancel key (Esc; Cmd+. on macOS) clicks the first reachable enabled button of Order.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool floating_;
  std::function<void()> closing_;
  bool ordered_ = false;
  std::vector<QPointer<QWidget>> order_;
};

// Makes accessibility clients see every WindowWidget as a window named by its title, with the
// children of its Order once one is set, and every progress bar with its busy state. Installed
// once; safe to call again.
void InstallAccessibleInterfaces();

}  // namespace platform
