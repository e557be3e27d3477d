// No input may crash or hang the reader, and its tokens and tree must be the ones the plain
// byte-by-byte split and level-by-level scan give.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "json/json_extract.h"
#include "json/remove_escapes.h"
#include "json/tree_dictionary.h"
#include "naive_reader.h"
#include "platform/exceptions.h"

namespace {

// Short texts from JSON's own characters, weighted towards brackets so that surplus closers,
// unclosed openers and mixed pairs come up often.
std::string RandomText(std::mt19937& random) {
  static const std::string kAlphabet[] = {"{",   "}",  "[", "]",  ":",        ",", "\"",   "\\",
                                          " ",   "a",  "1", "-",  ".",        "e", "true", "null",
                                          "\\u", "D8", "0", "\n", "\xC3\xA9", "{", "}",    "\""};
  std::uniform_int_distribution<int> length(0, 40);
  std::uniform_int_distribution<std::size_t> pick(0, std::size(kAlphabet) - 1);
  std::string text;
  for (int n = length(random); n > 0; --n) text += kAlphabet[pick(random)];
  return text;
}

TEST(JsonRobustness, RandomTextsReadAsThePlainScanReadsThemAndNeverFail) {
  std::mt19937 random(20240611);
  int dictionaries = 0;
  for (int round = 0; round < 30000; ++round) {
    const std::string text = RandomText(random);
    std::size_t keys = 0;
    ASSERT_EQ(qem_test::DifferenceFromPlain(text, keys), "") << "text: " << text;
    if (keys > 0) ++dictionaries;
    // Unescaping never grows the text.
    std::string buffer = text;
    ASSERT_LE(JSON::remove_escapes(buffer.data(), static_cast<std::int64_t>(buffer.size())),
              static_cast<std::int64_t>(text.size()));
  }
  // The texts must reach the interesting paths, not only the empty result.
  EXPECT_GT(dictionaries, 1000);
}

// Deep texts must end normally or in the depth exception, and fast: the time limit is far above
// what a linear reader needs, even under the sanitizers. Both the tree and the direct reading.
TEST(JsonRobustness, HugeDepthEndsNormallyOrInTheDepthException) {
  const auto ends_in_order = [](const std::string& text, auto read) {
    const auto begin = std::chrono::steady_clock::now();
    try {
      read(text);
    } catch (const platform::RuntimeException& e) {
      EXPECT_STREQ(e.what(), "JSON nested too deeply");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  };
  constexpr int kDepth = 100000;
  std::string objects, alternating;
  for (int i = 0; i < kDepth; ++i) objects += R"({"a":)";
  for (int i = 0; i < kDepth; ++i) alternating += "[{";
  for (const std::string& text :
       {std::string(kDepth, '{'), std::string(kDepth, '['), std::string(kDepth, '}'),
        std::string(kDepth, '[') + std::string(kDepth, ']'),
        objects + "1" + std::string(kDepth, '}'), alternating + std::string(2 * kDepth, ']')}) {
    ends_in_order(text, [](const std::string& t) { JSONExtract tree(t); });
    ends_in_order(text,
                  [](const std::string& t) { EXPECT_TRUE(JSON::JSONStringToTreeDictionary(t)); });
  }
}

}  // namespace
