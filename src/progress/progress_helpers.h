#pragma once
// The style flags of a progress window, and the one conversion of its layout from a double to
// an integer. No window and no control: the layout computed from these stands without a GUI.

#include <cstdint>

namespace progress_helpers {

// Which areas a progress window shows, as single-bit flags in one integer. Bits other than the
// three named ones are carried and mean nothing. A value type: a state's style is replaced
// whole, never changed in place.
class prog_style {
 public:
  // New values with one flag each (none: no flag).
  static prog_style none() noexcept { return prog_style(0); }
  // The message shows in the label; without it the message goes to the window's title bar.
  static prog_style has_message() noexcept { return prog_style(1); }
  // The bar shows and the buttons stand at the right; without it the buttons are centred.
  static prog_style has_progress() noexcept { return prog_style(2); }
  // The window stays off the screen.
  static prog_style hidden() noexcept { return prog_style(4); }

  std::int64_t Value() const noexcept { return value_; }
  explicit operator std::int64_t() const noexcept { return value_; }
  // The conversion from an integer: overwrites this style's flags with `value`.
  prog_style& operator=(std::int64_t value) noexcept {
    value_ = value;
    return *this;
  }

  // True when every flag of `other` is set here; so always true for none.
  bool Contains(prog_style other) const noexcept { return (value_ & other.value_) == other.value_; }
  // -1 when `other` is nil; otherwise the sign of this value minus the other's.
  int Compare(const prog_style* other) const noexcept;

  friend prog_style operator&(prog_style a, prog_style b) noexcept {
    return prog_style(a.value_ & b.value_);
  }
  friend prog_style operator|(prog_style a, prog_style b) noexcept {
    return prog_style(a.value_ | b.value_);
  }
  friend prog_style operator^(prog_style a, prog_style b) noexcept {
    return prog_style(a.value_ ^ b.value_);
  }
  friend bool operator==(prog_style a, prog_style b) noexcept { return a.value_ == b.value_; }

 private:
  explicit prog_style(std::int64_t value) noexcept : value_(value) {}
  std::int64_t value_;
};

// A double as an integer, truncated toward zero; NaN gives 0 and values past the 64-bit range
// give its ends, so no input can make the conversion undefined.
std::int64_t truncate(double value) noexcept;

}  // namespace progress_helpers
