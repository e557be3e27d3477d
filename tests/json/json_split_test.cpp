#include "json/json_split.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/exceptions.h"

namespace {

std::vector<std::string> Tokens(std::string text) {
  JSON::TokenArray split = JSON::JSON_Split(std::make_shared<const std::string>(std::move(text)));
  return {split.tokens.begin(), split.tokens.end()};
}

struct SplitCase {
  std::string input;
  std::vector<std::string> tokens;
};

void ExpectSplits(const std::vector<SplitCase>& cases) {
  for (const auto& c : cases) EXPECT_EQ(Tokens(c.input), c.tokens) << "input: " << c.input;
}

TEST(JsonSplit, SelfTestTableHolds) {
  ExpectSplits({
      {"{}", {"{", "}"}},
      {R"({"hello"})", {"{", R"("hello")", "}"}},
      {R"({"hello\""})", {"{", R"("hello\"")", "}"}},
      {R"({"hello":1234})", {"{", R"("hello")", ":", "1234", "}"}},
  });
  EXPECT_TRUE(JSON::JSON_Split_Test());
}

TEST(JsonSplit, TextWithoutPunctuationOrCompleteStringGivesNoToken) {
  ExpectSplits({{"", {}}, {"1234", {}}, {"true", {}}, {" \t\n", {}}, {R"("open)", {}}});
}

TEST(JsonSplit, WhiteSpaceMakesNoTokenButStaysAroundBareText) {
  ExpectSplits({
      {"{ }", {"{", "}"}},
      {"{ \"a\" :\r\n\"b\"\t}", {"{", R"("a")", ":", R"("b")", "}"}},
      {R"({"a": 12 })", {"{", R"("a")", ":", " 12 ", "}"}},
  });
}

TEST(JsonSplit, StringsKeepQuotesBackslashesAndInnerPunctuation) {
  ExpectSplits({
      {R"({"a,b:c"})", {"{", R"("a,b:c")", "}"}},
      {R"({"{[]}"})", {"{", R"("{[]}")", "}"}},
      {R"({"a\\"})", {"{", R"("a\\")", "}"}},
      // Three backslashes: the quotation mark is escaped and the string never closes.
      {R"({"a\\\"})", {"{"}},
      {R"("a""b")", {R"("a")", R"("b")"}},
      {"{\"x\n\x01\xC3\xA9\x80\"}", {"{", "\"x\n\x01\xC3\xA9\x80\"", "}"}},
  });
}

TEST(JsonSplit, DropsWhatItCannotUse) {
  ExpectSplits({
      {R"({"a":"b)", {"{", R"("a")", ":"}},
      {R"({"a":1}xyz)", {"{", R"("a")", ":", "1", "}"}},
      {R"({abc"d":1})", {"{", R"("d")", ":", "1", "}"}},
      {R"({"a"b:1})", {"{", R"("a")", "b", ":", "1", "}"}},
      // Outside a string a backslash does not stop a quotation mark from opening one.
      {R"({\"a"})", {"{", R"("a")", "}"}},
      {R"(\\"a",)", {R"("a")", ","}},
      {"{]", {"{", "]"}},
  });
}

TEST(JsonSplit, NilTextIsRefused) {
  EXPECT_THROW(JSON::JSON_Split(nullptr), platform::NilObjectException);
}

TEST(JsonSplit, TokensShareTheText) {
  auto text = std::make_shared<const std::string>(R"({"a":1})");
  JSON::TokenArray split = JSON::JSON_Split(text);
  EXPECT_EQ(split.text, text);
  for (std::string_view token : split.tokens) {
    EXPECT_GE(token.data(), text->data());
    EXPECT_LE(token.data() + token.size(), text->data() + text->size());
  }
}

TEST(JsonSplit, StringArraysEqualComparesLengthThenEachElementCaseBlind) {
  using V = std::vector<std::string_view>;
  EXPECT_TRUE(JSON::string_arrays_equal(V{}, V{}));
  EXPECT_TRUE(JSON::string_arrays_equal(V{"a", "TRUE"}, V{"a", "true"}));
  EXPECT_FALSE(JSON::string_arrays_equal(V{"a"}, V{"a", "b"}));
  EXPECT_FALSE(JSON::string_arrays_equal(V{"a", "b"}, V{"a", "c"}));
  EXPECT_FALSE(JSON::string_arrays_equal(V{""}, V{}));
}

}  // namespace
