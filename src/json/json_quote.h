#pragma once
// Writing a text as a JSON string: the one quoting that commands, replies and dumps share.

#include <string>
#include <string_view>

namespace JSON {

// `text` as a JSON string, quotes included: quotation mark and backslash escaped, control
// characters (and DEL) as \b \f \n \r \t or \u00XX; every other byte, UTF-8 included, as it is.
// Never fails; allocates the result only.
std::string quoted(std::string_view text);

}  // namespace JSON
