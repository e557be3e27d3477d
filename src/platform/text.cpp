#include "platform/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <system_error>

namespace platform {

bool EqualsPlain(std::string_view a, std::string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  }
  return true;
}

bool LessPlain::operator()(std::string_view a, std::string_view b) const noexcept {
  const std::size_t common = a.size() < b.size() ? a.size() : b.size();
  for (std::size_t i = 0; i < common; ++i) {
    const char x = LowerAscii(a[i]), y = LowerAscii(b[i]);
    if (x != y) return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
  }
  return a.size() < b.size();
}

std::string_view TrimView(std::string_view text) noexcept {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && IsBlank(text[begin])) ++begin;
  while (end > begin && IsBlank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

std::string Trim(std::string_view text) {
  return std::string(TrimView(text));
}

namespace {

int DigitValue(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'z') return c - 'a' + 10;
  if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
  return 99;
}

double ReadRadix(std::string_view digits, int radix) noexcept {
  double value = 0;
  for (char c : digits) {
    int d = DigitValue(c);
    if (d >= radix) break;
    value = value * radix + d;
  }
  return value;
}

bool IsDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

}  // namespace

double Val(std::string_view text) noexcept {
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  text.remove_prefix(i);
  if (text.size() >= 2 && text[0] == '&') {
    switch (LowerAscii(text[1])) {
      case 'h':
        return ReadRadix(text.substr(2), 16);
      case 'o':
        return ReadRadix(text.substr(2), 8);
      case 'b':
        return ReadRadix(text.substr(2), 2);
      default:
        return 0;
    }
  }
  // Find the longest prefix of the form [sign] digits [. digits] [e [sign] digits].
  std::size_t n = 0;
  if (n < text.size() && (text[n] == '+' || text[n] == '-')) ++n;
  std::size_t mantissa_start = n;
  while (n < text.size() && IsDigit(text[n])) ++n;
  std::size_t int_digits = n - mantissa_start;
  std::size_t frac_digits = 0;
  if (n < text.size() && text[n] == '.') {
    std::size_t f = n + 1;
    while (f < text.size() && IsDigit(text[f])) ++f;
    frac_digits = f - n - 1;
    if (int_digits + frac_digits > 0) n = f;
  }
  if (int_digits + frac_digits == 0) return 0;
  if (n < text.size() && (text[n] == 'e' || text[n] == 'E')) {
    std::size_t e = n + 1;
    if (e < text.size() && (text[e] == '+' || text[e] == '-')) ++e;
    std::size_t exp_start = e;
    while (e < text.size() && IsDigit(text[e])) ++e;
    if (e > exp_start) n = e;
  }
  // from_chars rejects a leading '+', so read past it.
  std::size_t from = (text[0] == '+') ? 1 : 0;
  double value = 0;
  auto result = std::from_chars(text.data() + from, text.data() + n, value);
  if (result.ec == std::errc::result_out_of_range) {
    // Overflow gives infinity with the text's sign; underflow gives zero.
    bool negative = text[0] == '-';
    bool huge = false;
    for (std::size_t k = mantissa_start; k < n && !huge; ++k) {
      if (text[k] == 'e' || text[k] == 'E') {
        huge = k + 1 < n && text[k + 1] != '-';
        break;
      }
    }
    if (huge) return negative ? -HUGE_VAL : HUGE_VAL;
    return negative ? -0.0 : 0.0;
  }
  return value;
}

std::string Str(std::int64_t value, std::string_view format) {
  bool negative = value < 0;
  // Work in unsigned so the most negative value has a magnitude too.
  std::uint64_t magnitude = negative
                                ? static_cast<std::uint64_t>(0) - static_cast<std::uint64_t>(value)
                                : static_cast<std::uint64_t>(value);
  std::string digits = std::to_string(magnitude);
  if (digits.size() < format.size()) digits.insert(0, format.size() - digits.size(), '0');
  if (negative) digits.insert(0, 1, '-');
  return digits;
}

std::string Str(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace platform
