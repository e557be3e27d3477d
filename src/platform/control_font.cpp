#include "platform/control_font.h"

#include <algorithm>

#include <QApplication>
#include <QWidget>

#include "platform/text.h"

namespace platform {

QFont ControlFont(const std::string& name, double size) {
  QFont font = QApplication::font();
  if (!name.empty() && !EqualsPlain(name, "System")) font.setFamily(QString::fromStdString(name));
  if (size > 0) font.setPointSizeF(size);
  return font;
}

int ToWidgetCoordinate(std::int64_t value) noexcept {
  return static_cast<int>(std::clamp<std::int64_t>(value, -QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
}

int ToWidgetSize(std::int64_t value) noexcept {
  return static_cast<int>(std::clamp<std::int64_t>(value, 0, QWIDGETSIZE_MAX));
}

}  // namespace platform
