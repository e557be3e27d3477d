#include "json/json_split.h"

#include <atomic>
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
  std::size_t pending_start = 0;
  bool in_string = false;
  std::size_t backslash_run = 0;

  for (std::size_t index = 0; index < size; ++index) {
    const char c = bytes[index];
    if (in_string) {
      // A quotation mark closes the string when the backslashes right before it pair off.
      if (c == '"' && backslash_run % 2 == 0) {
        in_string = false;
        result.tokens.push_back(bytes.substr(pending_start, index - pending_start + 1));
        pending_start = index + 1;
      }
    } else if (c == '"') {
      // Pending bare text is dropped; outside a string a backslash protects nothing.
      in_string = true;
      pending_start = index;
    } else if (IsPunctuation(c)) {
      if (pending_start < index) {
        std::string_view bare = bytes.substr(pending_start, index - pending_start);
        // A slice of white space makes no token, but a bare token keeps its white space.
        if (HasNonBlank(bare)) result.tokens.push_back(bare);
      }
      result.tokens.push_back(bytes.substr(index, 1));
      pending_start = index + 1;
    }
    backslash_run = (c == '\\') ? backslash_run + 1 : 0;
  }
  // An open string and trailing bare text are dropped.
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
