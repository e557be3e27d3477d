#include "progress/set_rect.h"

#include "platform/desktop_ui_control.h"

namespace progress_helpers {

void set_rect(platform::DesktopUIControl& control, std::int64_t left, std::int64_t top,
              std::int64_t width, std::int64_t height) {
  if (control.Left() != left) control.Left(left);
  if (control.Top() != top) control.Top(top);
  if (control.Width() != width) control.Width(width);
  if (control.Height() != height) control.Height(height);
}

}  // namespace progress_helpers
