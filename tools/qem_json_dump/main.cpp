// qem_json_dump FILE|-: reads one text, passes it to the JSON reader and prints the dictionary
// that comes back in its canonical form, so a developer can see exactly what the system makes of
// a command.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "canonical_form.h"
#include "json/tree_dictionary.h"

namespace {

constexpr const char* kHelp =
    R"(usage: qem_json_dump FILE|-

Reads the whole of FILE (or standard input for -), gives it to the JSON reader
and prints the dictionary it returns, followed by a line end.

The form shows every value's type:
  null            nil
  true, false     Boolean
  1, 0.25, -3     Double: every number is one; written as the shortest decimal
                  text that reads back to the same value (also 1e+300, INF,
                  -INF, NaN)
  "text"          String, in quotation marks; \" \\ \b \f \n \r \t and, for
                  other bytes below 0x20 and 0x7F, \u00XX (lower-case hex);
                  all other bytes, UTF-8 included, as they are
  { ... }         Dictionary: one "key": value per line, in the order the keys
                  were first set; {} when empty
  [ ... ]         array: one value per line; [] when empty
Nested items are indented two blanks deeper than their container; items end
in "," but the last.

Exit status: 0 when the text was read (the reader accepts any text and may
give an empty dictionary); 1 when FILE can't be read or the reader throws
(one line on standard error); 2 on a wrong command line.
)";

bool ReadAll(std::FILE* file, std::string& text) {
  char buffer[65536];
  std::size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) text.append(buffer, n);
  return !std::ferror(file);
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "qem_json_dump: %s\n", message.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) {
    std::fputs(kHelp, stdout);
    return 0;
  }
  if (argc != 2) {
    std::fputs("usage: qem_json_dump FILE|-   (--help for the output form)\n", stderr);
    return 2;
  }
  const std::string name = argv[1];
  std::string text;
  if (name == "-") {
    if (!ReadAll(stdin, text))
      return Fail("cannot read standard input: " + std::string(std::strerror(errno)));
  } else {
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file) return Fail("cannot read " + name + ": " + std::strerror(errno));
    const bool ok = ReadAll(file, text);
    const int error = errno;
    std::fclose(file);
    if (!ok) return Fail("cannot read " + name + ": " + std::strerror(error));
  }
  try {
    const auto dictionary = JSON::JSONStringToTreeDictionary(text);
    std::string out = qem_json_dump::CanonicalForm(platform::Variant(dictionary), 2);
    out += '\n';
    std::fwrite(out.data(), 1, out.size(), stdout);
  } catch (const std::exception& e) {
    return Fail(e.what());
  }
  return std::fflush(stdout) == 0 ? 0 : Fail("cannot write standard output");
}
