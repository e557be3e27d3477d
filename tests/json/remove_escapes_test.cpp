#include "json/remove_escapes.h"

#include <gtest/gtest.h>

#include "text_table.h"

#include <string>

namespace {

using namespace std::string_literals;

std::string Unescape(std::string buffer) {
  auto n = JSON::remove_escapes(buffer.data(), static_cast<std::int64_t>(buffer.size()));
  EXPECT_GE(n, 0);
  EXPECT_LE(n, static_cast<std::int64_t>(buffer.size()));
  buffer.resize(static_cast<std::size_t>(n));
  return buffer;
}

void ExpectUnescapes(const std::vector<qem_test::TextCase>& cases) {
  qem_test::ExpectEach(cases, Unescape);
}

TEST(RemoveEscapes, EmptyBufferGivesZeroWithoutTouchingThePointer) {
  EXPECT_EQ(JSON::remove_escapes(nullptr, 0), 0);
}

TEST(RemoveEscapes, TwoByteEscapes) {
  ExpectUnescapes({
      {"abc", "abc"},
      {R"(a\nb)", "a\nb"},
      {R"(\"\\\/)", R"("\/)"},
      {R"(\b\f\n\r\t)", "\b\f\n\r\t"},
      // The pair is consumed first: a backslash and n, not a line feed.
      {R"(\\n)", R"(\n)"},
  });
}

TEST(RemoveEscapes, UnknownAndTruncatedEscapesStayOrGo) {
  ExpectUnescapes({
      {R"(abc\)", "abc"},
      {R"(\x41)", R"(\x41)"},
      {R"(\u12)", R"(\u12)"},
      {R"(\u)", R"(\u)"},
      {R"(a\)", "a"},
  });
}

TEST(RemoveEscapes, SingleCodeUnits) {
  ExpectUnescapes({
      {R"(\u0041)", "A"},
      {R"(\u00e9)", "\xC3\xA9"},
      {R"(\u00E9)", "\xC3\xA9"},
      {R"(\u20AC)", "\xE2\x82\xAC"},
      {R"(\u0000)", "\0"s},
      {R"(x\u007Fy)", "x\x7Fy"},
      {R"(\u07FF\u0800)", "\xDF\xBF\xE0\xA0\x80"},
      // The four bytes are read as far as they are hexadecimal digits.
      {R"(\u12G4)", "\x12"},
      {R"(\uzzzz)", "\0"s},
      // The closing quotation mark of a token is a byte of the buffer like any other.
      {R"("\u123")", "\"\xC4\xA3"},
  });
}

TEST(RemoveEscapes, SurrogatePairsAndLoneSurrogates) {
  ExpectUnescapes({
      {R"(\uD83D\uDE00)", "\xF0\x9F\x98\x80"},
      {R"(\uD800\uDC00)", "\xF0\x90\x80\x80"},
      {R"(\uDBFF\uDFFF)", "\xF4\x8F\xBF\xBF"},
      // A high surrogate with a \u that is no low surrogate: both vanish.
      {R"(\uD83D\u0041)", ""},
      {R"(a\uD83D\u0041b)", "ab"},
      {R"(\uD83Dx)", "\xEF\xBF\xBDx"},
      {R"(\uD83D)", "\xEF\xBF\xBD"},
      {R"(\uD83D\n)", "\xEF\xBF\xBD\n"},
      {R"(\uDE00)", "\xEF\xBF\xBD"},
      {R"(\uDE00\uD83D)", "\xEF\xBF\xBD\xEF\xBF\xBD"},
      // Too close to the end for a pair: the high half alone, then the rest as it is.
      {R"(\uD83D\uDE0)", "\xEF\xBF\xBD\\uDE0"},
  });
}

TEST(RemoveEscapes, ReadsOnlyTheGivenLengthAndLeavesTheRestAlone) {
  std::string buffer = R"(a\nXYZ)";
  EXPECT_EQ(JSON::remove_escapes(buffer.data(), 3), 2);
  EXPECT_EQ(buffer, "a\nnXYZ");
  // An escape that would reach past the length is not read.
  buffer = R"(\u0041)";
  EXPECT_EQ(JSON::remove_escapes(buffer.data(), 5), 5);
  EXPECT_EQ(buffer, R"(\u0041)");
}

}  // namespace
