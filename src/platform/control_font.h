#pragma once
// The one rule that turns a control's FontName and FontSize into a QFont. The wrappers draw with
// it and the measurer measures with it, so that measured text fits the control that shows it.

#include <cstdint>
#include <string>

#include <QFont>

namespace platform {

// "System" (any letter case) or an empty name: the application's default family. A size of 0
// or less: the application's default size; otherwise the size in points.
QFont ControlFont(const std::string& name, double size);

// A coordinate or a size in points as Qt takes it: clamped to what a widget can hold.
int ToWidgetCoordinate(std::int64_t value) noexcept;
int ToWidgetSize(std::int64_t value) noexcept;

}  // namespace platform
