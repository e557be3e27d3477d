#pragma once
// The one way the controls of a progress window are moved.

#include <cstdint>

namespace platform {
class DesktopUIControl;
}

namespace progress_helpers {

// Moves `control` to the rectangle, writing only the properties that differ (read first): a
// control already in place gets no write at all.
void set_rect(platform::DesktopUIControl& control, std::int64_t left, std::int64_t top,
              std::int64_t width, std::int64_t height);

}  // namespace progress_helpers
