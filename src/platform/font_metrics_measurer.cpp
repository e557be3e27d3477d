#include "platform/font_metrics_measurer.h"

#include <algorithm>
#include <cmath>

#include <QFontMetrics>
#include <QFontMetricsF>
#include <QString>

#include "platform/control_font.h"

namespace platform {

namespace {

class QtFontMeasurer : public TextMeasurer {
 public:
  double StringHeight(const std::string& text, const std::string& font, double size,
                      double width) override {
    const QFontMetrics metrics(ControlFont(font, size));
    // Wrapped as a word-wrapping label wraps it: at word boundaries, within the width.
    const int wrap = std::isnan(width) ? 1 : static_cast<int>(std::clamp(width, 1.0, 1e7));
    const QRect bounds = metrics.boundingRect(QRect(0, 0, wrap, 1 << 24), Qt::TextWordWrap,
                                              QString::fromUtf8(text.data(), std::ssize(text)));
    return bounds.height();
  }

  double StringWidth(const std::string& text, const std::string& font, double size) override {
    const QFontMetricsF metrics(ControlFont(font, size));
    return metrics.horizontalAdvance(QString::fromUtf8(text.data(), std::ssize(text)));
  }
};

}  // namespace

std::shared_ptr<TextMeasurer> FontMetricsMeasurer() {
  static const auto measurer = std::make_shared<QtFontMeasurer>();
  return measurer;
}

}  // namespace platform
