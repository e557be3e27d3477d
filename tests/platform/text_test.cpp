#include "platform/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using platform::Val;

TEST(Text, PlainComparisonIgnoresAsciiCaseOnlyAndTrimAsciiWhiteSpaceOnly) {
  EXPECT_TRUE(platform::EqualsPlain("TRUE", "true"));
  EXPECT_FALSE(platform::EqualsPlain("true ", "true"));
  // Bytes above ASCII must match exactly: "É" (C3 89) and "é" (C3 A9) differ.
  EXPECT_FALSE(platform::EqualsPlain("\xC3\x89", "\xC3\xA9"));
  EXPECT_EQ(platform::Trim(" \t\r\n\v\fa b\f\v\n\r\t "), "a b");
  EXPECT_EQ(platform::Trim("\xC2\xA0x"), "\xC2\xA0x");  // no-break space is content
  // The order of keyed tables agrees with the comparison: plain-equal texts are one key.
  const platform::LessPlain less;
  EXPECT_TRUE(less("a1", "B") && less("\xC3\x89", "\xC3\xA9"));
  EXPECT_FALSE(less("P1", "p1") || less("p1", "P1"));
}

TEST(Text, ValReadsTheNumberTheTextStartsWith) {
  const std::pair<const char*, double> cases[] = {
      {" 12 ", 12}, {"-3", -3},    {"+4", 4},           {".5", 0.5},  {"5.", 5},     {"2E-2", 0.02},
      {"1e+", 1},   {"12abc", 12}, {"abc", 0},          {"-", 0},     {"&hFF", 255}, {"&Hff", 255},
      {"&h1g", 1},  {"&h", 0},     {"&o17", 15},        {"&b102", 2}, {"&x1", 0},    {"\n\t7", 7},
      {"1,5", 1},   {"0x10", 0},   {"1e400", HUGE_VAL},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_DOUBLE_EQ(Val(text), expected) << '"' << text << '"';
}

TEST(Text, StrPadsIntegersAndGivesDoublesTheShortestTextThatReadsBack) {
  const std::pair<std::string, std::string> rows[] = {
      {platform::Str(7, "00"), "07"},   {platform::Str(123, "00"), "123"},
      {platform::Str(-5, "00"), "-05"}, {platform::Str(INT64_MIN, ""), "-9223372036854775808"},
      {platform::Str(-0.1), "-0.1"},
  };
  for (const auto& [got, expected] : rows) EXPECT_EQ(got, expected);
  for (double d : {0.1 + 0.2, 1e300, 5e-324, 123456789.123}) {
    EXPECT_EQ(Val(platform::Str(d)), d) << platform::Str(d);
  }
}

}  // namespace
