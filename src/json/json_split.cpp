#include "json/json_split.h"

#include <atomic>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/exceptions.h"
#include "platform/text.h"

namespace JSON {

namespace {

// Set once, before the self-test runs, so that the splits the self-test makes do not start it
// again.
std::atomic<bool> self_test_started{false};

bool IsPunctuation(char c) noexcept {
  return c == '{' || c == '}' || c == '[' || c == ']' || c == ':' || c == ',';
}

bool HasNonBlank(std::string_view slice) noexcept {
  for (char c : slice) {
    if (!platform::IsBlank(c)) return true;
  }
  return false;
}

}  // namespace

TokenArray JSON_Split(const std::shared_ptr<const std::string>& mem) {
  if (!self_test_started.exchange(true)) JSON_Split_Test();
  if (!mem) throw platform::NilObjectException("JSON_Split: no text");
  if (mem->size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw platform::RuntimeException("JSON text too long");
  }

  TokenArray result;
  result.text = mem;
  const std::string_view bytes(*mem);
  const std::size_t size = bytes.size();
  // Typical texts have about one token for every three or four bytes; one reservation spares
  // the copies of a growing array.
  result.tokens.reserve(size / 2 + 4);
  std::size_t pending_start = 0;
  std::size_t index = 0;
  while (index < size) {
    const char c = bytes[index];
    if (c == '"') {
      // A string: pending bare text is dropped, and outside a string a backslash protects
      // nothing. The string ends at the first quotation mark whose backslashes right before it
      // pair off; the run can't reach back past the opening quotation mark.
      pending_start = index;
      std::size_t close = index;
      while (true) {
        const void* found = std::memchr(bytes.data() + close + 1, '"', size - close - 1);
        if (!found) return result;  // an open string is dropped with everything after it
        close = static_cast<std::size_t>(static_cast<const char*>(found) - bytes.data());
        std::size_t backslashes = 0;
        while (bytes[close - 1 - backslashes] == '\\') ++backslashes;
        if (backslashes % 2 == 0) break;
      }
      result.tokens.push_back(bytes.substr(pending_start, close - pending_start + 1));
      pending_start = close + 1;
      index = close + 1;
      continue;
    }
    if (IsPunctuation(c)) {
      if (pending_start < index) {
        std::string_view bare = bytes.substr(pending_start, index - pending_start);
        // A slice of white space makes no token, but a bare token keeps its white space.
        if (HasNonBlank(bare)) result.tokens.push_back(bare);
      }
      result.tokens.push_back(bytes.substr(index, 1));
      pending_start = index + 1;
    }
    ++index;
  }
  // Trailing bare text is dropped.
  return result;
}

bool JSON_Split_Test() {
  const std::pair<const char*, std::vector<std::string_view>> table[] = {
      {"{}", {"{", "}"}},
      {R"({"hello"})", {"{", R"("hello")", "}"}},
      {R"({"hello\""})", {"{", R"("hello\"")", "}"}},
      {R"({"hello":1234})", {"{", R"("hello")", ":", "1234", "}"}},
  };
  bool all_equal = true;
  for (const auto& [input, expected] : table) {
    TokenArray got = JSON_Split(std::make_shared<const std::string>(input));
    if (!string_arrays_equal(got.tokens, expected)) all_equal = false;
  }
  return all_equal;
}

bool string_arrays_equal(const std::vector<std::string_view>& a,
                         const std::vector<std::string_view>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!platform::EqualsPlain(a[i], b[i])) return false;
  }
  return true;
}

}  // namespace JSON
