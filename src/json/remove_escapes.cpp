#include "json/remove_escapes.h"

#include <string>

#include "platform/text.h"

namespace JSON {

namespace {

// The code unit that the four bytes at `digits` give when read as "&h" followed by them.
std::int32_t ReadCodeUnit(const char* digits) {
  char text[6] = {'&', 'h', digits[0], digits[1], digits[2], digits[3]};
  return static_cast<std::int32_t>(platform::Val(std::string_view(text, sizeof text)));
}

// Writes the UTF-8 form of `code` at `out` and returns the position after it. A surrogate code
// unit is no character of its own and is written as U+FFFD.
char* WriteUtf8(char* out, std::uint32_t code) {
  if (code >= 0xD800 && code <= 0xDFFF) code = 0xFFFD;
  if (code < 0x80) {
    *out++ = static_cast<char>(code);
  } else if (code < 0x800) {
    *out++ = static_cast<char>(0xC0 | (code >> 6));
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    *out++ = static_cast<char>(0xE0 | (code >> 12));
    *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *out++ = static_cast<char>(0xF0 | (code >> 18));
    *out++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out++ = static_cast<char>(0x80 | (code & 0x3F));
  }
  return out;
}

char SimpleEscape(char c) {
  switch (c) {
    case '"':
      return '"';
    case '\\':
      return '\\';
    case '/':
      return '/';
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return 0;
  }
}

}  // namespace

std::int64_t remove_escapes(char* p, std::int64_t len) {
  if (len == 0) return 0;
  const char* read = p;
  const char* const end = p + len;
  char* write = p;
  // Every rule writes no more bytes than it consumes, so `write` never passes `read`.
  while (read != end) {
    if (*read != '\\') {
      *write++ = *read++;
      continue;
    }
    if (read == end - 1) break;  // a trailing backslash is dropped
    const char next = read[1];
    if (char simple = SimpleEscape(next)) {
      *write++ = simple;
      read += 2;
    } else if (next == 'u' && end - read >= 6) {
      const std::int32_t first = ReadCodeUnit(read + 2);
      const bool opens_pair = first >= 0xD800 && first <= 0xDBFF && end - read >= 12 &&
                              read[6] == '\\' && read[7] == 'u';
      if (!opens_pair) {
        write = WriteUtf8(write, static_cast<std::uint32_t>(first));
        read += 6;
      } else {
        const std::int32_t second = ReadCodeUnit(read + 8);
        if (second >= 0xDC00 && second <= 0xDFFF) {
          const std::uint32_t code = 0x10000 +
                                     ((static_cast<std::uint32_t>(first) - 0xD800) << 10) +
                                     (static_cast<std::uint32_t>(second) - 0xDC00);
          write = WriteUtf8(write, code);
        }
        read += 12;  // without a low surrogate both escapes vanish
      }
    } else {
      // Unknown escape, or \u too close to the end: only the backslash is consumed here, and
      // the next step copies the byte after it.
      *write++ = *read++;
    }
  }
  return write - p;
}

}  // namespace JSON
