#pragma once
// Resolving the backslash escapes of JSON text, in place.

#include <cstdint>

namespace JSON {

// Resolves the escapes in the `len` bytes at `p` and returns how many bytes from `p` are valid
// afterwards; the bytes behind that length mean nothing. Works in place and in one pass, never
// writes past what it has read, allocates nothing and keeps no state. It never fails:
//   \" \\ \/ \b \f \n \r \t   give their one byte;
//   \uXXXX                    gives the UTF-8 of the code unit that the four bytes read as
//                             hexadecimal (up to the first byte that is no hexadecimal digit);
//                             a high surrogate followed by \u and a low surrogate gives the pair's
//                             four-byte character, followed by anything else in \u form both
//                             escapes vanish; a lone surrogate gives U+FFFD;
//   any other escape          stays as it is, backslash included, and so does a \u with fewer
//                             than four bytes after the u;
//   a backslash as the last byte is dropped.
// `p` may be null only when `len` is 0.
std::int64_t remove_escapes(char* p, std::int64_t len);

}  // namespace JSON
