#pragma once
// Counts of the property writes that reach a window or a control. Every setter of the wrappers
// counts one write whether or not the value changes, so a layout that reads before it writes can
// be seen to write only what changed. Plain counters, no Qt.

#include <array>
#include <cstddef>

namespace platform {

enum class Property : std::size_t {
  Left,
  Top,
  Width,
  Height,
  Visible,
  Enabled,
  FontName,
  FontSize,
  Title,
  MinimumWidth,
  MinimumHeight,
  MaximumWidth,
  MaximumHeight,
  Resizeable,
  Text,
  Caption,
  Indeterminate,
  MaximumValue,
  Value,
  TextAlignment,
  Multiline,
  Count_
};

class WriteCounts {
 public:
  void Count(Property property) noexcept {
    ++counts_[static_cast<std::size_t>(property)];
    ++total_;
  }
  // Writes of one property, and of all, since the object was made or last reset.
  long Of(Property property) const noexcept { return counts_[static_cast<std::size_t>(property)]; }
  long Total() const noexcept { return total_; }
  void Reset() noexcept {
    counts_.fill(0);
    total_ = 0;
  }

 private:
  std::array<long, static_cast<std::size_t>(Property::Count_)> counts_{};
  long total_ = 0;
};

}  // namespace platform
