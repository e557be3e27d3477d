#include "progress/progress_helpers.h"

#include <cmath>
#include <limits>

namespace progress_helpers {

int prog_style::Compare(const prog_style* other) const noexcept {
  if (other == nullptr) return -1;
  // The difference wraps as a signed 64-bit integer would, and its sign is taken as a double.
  const auto difference = static_cast<std::int64_t>(static_cast<std::uint64_t>(value_) -
                                                    static_cast<std::uint64_t>(other->value_));
  const double d = static_cast<double>(difference);
  return (d > 0) - (d < 0);
}

std::int64_t truncate(double value) noexcept {
  if (std::isnan(value)) return 0;
  constexpr double kTop = 9223372036854775808.0;  // 2^63, the first double past the range
  if (value >= kTop) return std::numeric_limits<std::int64_t>::max();
  if (value <= -kTop) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

}  // namespace progress_helpers
