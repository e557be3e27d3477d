#pragma once
// Numbered test messages that tell on themselves: "<tag>:<index>:<length>:" and then `length`
// copies of one letter chosen by tag and index. A record merged with another or cut short no
// longer parses. Every 25th message is 64 KiB in all.

#include <cstddef>
#include <string>

namespace qem_test {

constexpr std::size_t kLargeMessage = 64 * 1024;

inline char FillerOf(int tag, int index) {
  return static_cast<char>('a' + (tag * 7 + index) % 26);
}

inline std::string NumberedMessage(int tag, int index) {
  std::string head = std::to_string(tag) + ":" + std::to_string(index) + ":";
  std::size_t length = static_cast<std::size_t>(index * 37 % 200);
  if (index % 25 == 7) {
    // Sized so that the whole message is exactly 64 KiB.
    std::size_t digits = std::to_string(kLargeMessage).size();
    length = kLargeMessage - head.size() - digits - 1;
  }
  return head + std::to_string(length) + ":" + std::string(length, FillerOf(tag, index));
}

// True when `text` is exactly one whole numbered message; gives its tag and index.
inline bool ParseNumbered(const std::string& text, int& tag, int& index) {
  std::size_t a = text.find(':');
  std::size_t b = a == std::string::npos ? a : text.find(':', a + 1);
  std::size_t c = b == std::string::npos ? b : text.find(':', b + 1);
  if (c == std::string::npos) return false;
  try {
    tag = std::stoi(text.substr(0, a));
    index = std::stoi(text.substr(a + 1, b - a - 1));
  } catch (...) {
    return false;
  }
  return text == NumberedMessage(tag, index);
}

}  // namespace qem_test
