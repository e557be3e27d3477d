#pragma once
// Text helpers. Text is std::string holding UTF-8 bytes; nothing here converts encodings.

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

// The plain comparison: byte equality that ignores ASCII letter case. Used wherever option
// values, command words, JSON literals and dictionary keys are compared.
bool EqualsPlain(std::string_view a, std::string_view b) noexcept;

// An order that agrees with the plain comparison: texts that differ only in ASCII letter case
// are equivalent. For ordered containers whose keys are compared as dictionary keys are.
struct LessPlain {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept;
};

// ASCII lower case of one byte; other bytes unchanged.
constexpr char LowerAscii(char c) noexcept {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// True for the white space Trim removes: space, tab, LF, CR, VT, FF.
constexpr bool IsBlank(char c) noexcept {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// The text without ASCII white space at both ends.
std::string_view TrimView(std::string_view text) noexcept;
std::string Trim(std::string_view text);

// The number the text starts with, after leading white space: optional sign, digits, fraction
// and exponent in decimal, independent of the locale; "&h", "&o", "&b" read hexadecimal, octal
// or binary digits up to the first byte that isn't one. 0 when no number starts the text.
double Val(std::string_view text) noexcept;

// An integer in decimal with at least as many digits as the format has characters ("0", "00",
// "000000000"); an empty format gives plain decimal. Negative numbers keep their sign in front.
std::string Str(std::int64_t value, std::string_view format = "");
inline std::string Str(int value, std::string_view format = "") {
  return Str(static_cast<std::int64_t>(value), format);
}

// The shortest text that reads back to the same double (1 -> "1", 1.5 -> "1.5").
std::string Str(double value);

}  // namespace platform
