#pragma once
// How text is measured for a layout. A layout asks a TextMeasurer instead of Qt, so that a test
// can put known sizes in place of a font's; the default measurer uses the same font as the
// control that shows the text (see ControlFont), so that what it measures fits.

#include <memory>
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

// The process-wide measurer over Qt's font metrics. Needs the application object to exist.
std::shared_ptr<TextMeasurer> FontMetricsMeasurer();

}  // namespace platform
