#pragma once
// The first stage of the JSON reader: cutting a text into a flat array of tokens.
//
// The cutter knows six punctuation bytes ({ } [ ] : ,) and the double-quoted string, nothing
// else. A string token keeps both quotation marks and every backslash; everything else between
// two tokens is bare text (numbers, literals, rubbish alike). It works on bytes, never reports
// bad input, and drops what it cannot use: bare text at the very end, an unterminated string,
// bare text right before an opening quotation mark.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace JSON {

// The tokens of one text. Every token is a view into `text`, which the array shares, so the
// views stay valid for as long as any copy of the array (or of `text`) lives. Nobody changes
// the text or the tokens after the split.
struct TokenArray {
  std::shared_ptr<const std::string> text;
  std::vector<std::string_view> tokens;

  std::int32_t size() const noexcept { return static_cast<std::int32_t>(tokens.size()); }
  std::string_view operator[](std::int32_t index) const { return tokens[index]; }
};

// Cuts `mem` into tokens in input order; an empty array when no token was found. One pass over
// the bytes, linear in the size; it does not block and keeps nothing between calls except that
// the first call of the process runs JSON_Split_Test before it splits.
// Throws platform::NilObjectException if `mem` is nil, and platform::RuntimeException if the
// text is 2 GiB or longer (token offsets are signed 32-bit). Nothing else is ever reported.
TokenArray JSON_Split(const std::shared_ptr<const std::string>& mem);

// The splitter's built-in self-test over its fixed table of four texts. A difference has no
// effect on the splitter; the result (true when every text gave its expected tokens) is there
// for the developer's tests.
bool JSON_Split_Test();

// True when both arrays have the same length and their elements are pairwise equal under the
// plain comparison (ASCII letter case ignored).
bool string_arrays_equal(const std::vector<std::string_view>& a,
                         const std::vector<std::string_view>& b);

}  // namespace JSON
