#pragma once
// How text is measured for a layout. A layout asks a TextMeasurer instead of Qt, so that it can
// be worked out without a display, and a test can put known sizes in place of a font's. The
// measurer the windows use is FontMetricsMeasurer (font_metrics_measurer.h).

#include <string>

namespace platform {

class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;
  // The height of `text` wrapped at `width` points, in the font `font` at `size` points ("System"
  // and 0 mean the application's default font). Never fails; an empty text measures 0 or one
  // line, as the font metrics say.
  virtual double StringHeight(const std::string& text, const std::string& font, double size,
                              double width) = 0;
  // The width of `text` on one line in that font.
  virtual double StringWidth(const std::string& text, const std::string& font, double size) = 0;
};

}  // namespace platform
