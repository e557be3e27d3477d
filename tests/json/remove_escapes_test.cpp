#include "json/remove_escapes.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace std::string_literals;

std::string Unescape(std::string buffer) {
  buffer.resize(static_cast<std::size_t>(
      JSON::remove_escapes(buffer.data(), static_cast<std::int64_t>(buffer.size()))));
  return buffer;
}

TEST(RemoveEscapes, ResolvesEscapesIntoUtf8) {
  const std::pair<std::string, std::string> rows[] = {
      {R"(a\"\\\/\b\f\n\r\t)", "a\"\\/\b\f\n\r\t"},
      {R"(\\n)", R"(\n)"},
      // Unknown or too short escapes stay; a backslash at the very end goes.
      {R"(\x41\u12)", R"(\x41\u12)"},
      {R"(abc\)", "abc"},
      {R"(\u0041\u00e9\u07FF\u0800\u20AC)", "A\xC3\xA9\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC"},
      {R"(\u0000\u12G4)", "\0\x12"s},
      {R"(\uD83D\uDE00\uDBFF\uDFFF)", "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
      // A high surrogate before a \u that is no low surrogate: both vanish. Any other lone
      // surrogate becomes U+FFFD.
      {R"(a\uD83D\u0041b)", "ab"},
      {R"(\uD83Dx\uDE00)", "\xEF\xBF\xBDx\xEF\xBF\xBD"},
      {R"(\uD83D\uDE0)", "\xEF\xBF\xBD\\uDE0"},
  };
  for (const auto& [text, want] : rows) EXPECT_EQ(Unescape(text), want) << "input: " << text;
}

TEST(RemoveEscapes, ReadsOnlyTheGivenLength) {
  EXPECT_EQ(JSON::remove_escapes(nullptr, 0), 0);
  std::string buffer = R"(a\nXYZ)";
  EXPECT_EQ(JSON::remove_escapes(buffer.data(), 3), 2);
  EXPECT_EQ(buffer, "a\nnXYZ");
  buffer = R"(\u0041)";
  EXPECT_EQ(JSON::remove_escapes(buffer.data(), 5), 5);
  EXPECT_EQ(buffer, R"(\u0041)");
}

}  // namespace
