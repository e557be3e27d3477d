#pragma once
// The reader's one scan over a range of tokens, shared by JSONExtract (which keeps a node per
// value) and by JSONStringToTreeDictionary (which makes the values directly). Internal to the
// reader.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "json/json_split.h"
#include "platform/exceptions.h"
#include "platform/variant.h"

namespace JSON::scan {

inline constexpr int kMaxDepth = 512;

inline bool IsOpener(std::string_view t) noexcept {
  return t.size() == 1 && (t[0] == '{' || t[0] == '[');
}

inline bool IsCloser(std::string_view t) noexcept {
  return t.size() == 1 && (t[0] == '}' || t[0] == ']');
}

inline bool IsPunct(std::string_view t, char c) noexcept {
  return t.size() == 1 && t[0] == c;
}

// For each opening bracket the index of the closing bracket that brings the count back to zero
// (any closer closes any opener), -1 when none does and for every other token. One pass.
std::vector<std::int32_t> MatchClosers(const TokenArray& tokens);

// Throws the depth exception when a container at `depth` would be too deep.
inline void CheckDepth(int depth) {
  if (depth > kMaxDepth) throw platform::RuntimeException("JSON nested too deeply");
}

// The level-by-level scan of the range from start to end: a nesting count over the tokens,
// a container where the count returns to zero (`container(first, last, name, closer_token)`),
// a scalar at count zero (`scalar(index, name)`), names taken from the token before each ":".
// Where the count rises from 0 to 1, the scan jumps straight to the matching closer, since the
// tokens between change nothing at this level; so each token is looked at on one level only and
// a whole tree costs time linear in the number of tokens. A range of one token is not scanned.
// Throws platform::OutOfBoundsException when a ":" has no token before it.
template <class Container, class Scalar>
void ScanRange(const TokenArray& tokens, const std::vector<std::int32_t>& closer,
               std::int32_t start, std::int32_t end, std::string_view name, Container&& container,
               Scalar&& scalar) {
  if (end <= start) return;
  // Never above 0 at the top of the loop: a rise to 1 is settled at once by the jump.
  std::int32_t count = 0;
  for (std::int32_t i = start; i <= end; ++i) {
    const std::string_view t = tokens[i];
    if (IsOpener(t)) {
      if (++count != 1) continue;
      const std::int32_t j = closer[i];
      // No closer inside the range: the count stays above 0 to its end, nothing more happens.
      if (j < 0 || j > end) return;
      container(i + 1, j - 1, name, tokens[j]);
      count = 0;
      i = j;
    } else if (IsCloser(t)) {
      --count;  // from 0 or below: a surplus closer, no container
    } else if (count != 0 || IsPunct(t, ',')) {
      // inside a surplus-closer stretch, or a separator
    } else if (IsPunct(t, ':')) {
      if (i == 0) throw platform::OutOfBoundsException("JSON: no name before \":\"");
      name = tokens[i - 1];
    } else if (i == end || !IsPunct(tokens[i + 1], ':')) {
      scalar(i, name);
    }
  }
}

// The value of a scalar from its text with escapes resolved: true, false (letter case ignored,
// whole text), a String when the text is in quotation marks, nil for null, else the Double that
// Val reads.
platform::Variant ScalarValue(std::string_view text);

// The value of the scalar of one token: ScalarValue of the token with its escapes resolved. A
// token without a backslash is read in place, without a copy.
platform::Variant TokenValue(std::string_view token);

// The dictionary key for a raw name: quotation marks off (when it has both), then unescaped.
// A view into `pname` when the name holds no backslash, else into `storage`, which then keeps
// the unescaped key.
std::string_view KeyView(std::string_view pname, std::string& storage);

// The tokens from first to last run together, with escapes resolved.
std::string JoinUnescaped(const TokenArray& tokens, std::int32_t first, std::int32_t last);

}  // namespace JSON::scan
