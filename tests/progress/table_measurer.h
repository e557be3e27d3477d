#pragma once
// Known text sizes in place of a font's, without a display: a text is as wide as `widths` says,
// else 10 points per byte, and 17 points high per line when wrapped at the width asked for.

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "platform/text_measurer.h"

namespace qem_test {

class TableMeasurer : public platform::TextMeasurer {
 public:
  std::map<std::string, double> widths;
  double StringHeight(const std::string& text, const std::string& font, double size,
                      double width) override {
    return 17.0 * std::max(1.0, std::ceil(StringWidth(text, font, size) / width));
  }
  double StringWidth(const std::string& text, const std::string&, double) override {
    const auto known = widths.find(text);
    return known != widths.end() ? known->second : 10.0 * static_cast<double>(text.size());
  }
};

}  // namespace qem_test
