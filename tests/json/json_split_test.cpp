#include "json/json_split.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/exceptions.h"

namespace {

std::vector<std::string> Tokens(const std::string& text) {
  JSON::TokenArray split = JSON::JSON_Split(std::make_shared<const std::string>(text));
  return {split.tokens.begin(), split.tokens.end()};
}

TEST(JsonSplit, CutsTextIntoPunctuationStringsAndBareText) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"{ \"a\" :\r\n\"b\"\t}", {"{", R"("a")", ":", R"("b")", "}"}},
      {R"({"a": 12 })", {"{", R"("a")", ":", " 12 ", "}"}},
      {R"({"a,b:c{[]}"})", {"{", R"("a,b:c{[]}")", "}"}},
      // A quotation mark closes a string when the backslashes right before it pair off.
      {R"({"a\"b\\":1})", {"{", R"("a\"b\\")", ":", "1", "}"}},
      {R"({"a\\\"})", {"{"}},
      {"{\"x\n\x01\xC3\xA9\x80\"}", {"{", "\"x\n\x01\xC3\xA9\x80\"", "}"}},
      // Dropped: an open string with all after it, trailing bare text, bare text before a
      // string. Outside a string a backslash protects nothing.
      {R"({"a":"b)", {"{", R"("a")", ":"}},
      {R"({"a":1}xyz)", {"{", R"("a")", ":", "1", "}"}},
      {R"({abc"d"})", {"{", R"("d")", "}"}},
      {R"({\"a"})", {"{", R"("a")", "}"}},
  };
  for (const auto& [text, tokens] : rows) EXPECT_EQ(Tokens(text), tokens) << "input: " << text;
  EXPECT_TRUE(JSON::JSON_Split_Test());
  EXPECT_THROW(JSON::JSON_Split(nullptr), platform::NilObjectException);
}

}  // namespace
