#pragma once
// The measurer the windows use: Qt's font metrics, in the same font as the control that shows
// the text (see ControlFont), so that what it measures fits.

#include <memory>

#include "platform/text_measurer.h"

namespace platform {

// The process-wide measurer over Qt's font metrics. Needs the application object to exist.
std::shared_ptr<TextMeasurer> FontMetricsMeasurer();

}  // namespace platform
