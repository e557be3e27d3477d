#pragma once
// The canonical text of a value from the JSON reader, which shows every value's type:
//   nil        null
//   Boolean    true  false
//   Double     the shortest decimal text that reads back to the same value (1, 0.25, -3, 1e+300,
//              INF, -INF, NaN)
//   String     in quotation marks; " \ and the control bytes are escaped (\" \\ \b \f \n \r \t,
//              other bytes below 0x20 and 0x7F as \u00XX with lower-case hex digits); every
//              other byte, UTF-8 included, is written as it is
//   Dictionary {"key": value, ...} with the keys in the order they were first set, keys written
//              like strings; {} when empty
//   array      [value, ...]; [] when empty
// With indent 0 everything stands on one line, items separated by ", ". With indent n > 0 every
// item of a non-empty container stands on a line of its own, indented n blanks deeper than its
// container, items ending in "," but the last, and the closing bracket back at the container's
// indentation.

#include <string>

#include "platform/variant.h"

namespace qem_json_dump {

std::string CanonicalForm(const platform::Variant& value, int indent = 0);

}  // namespace qem_json_dump
