// No input may crash or hang the reader; its tree must be the one the plain level-by-level scan
// gives, and its dictionary the one the tree gives.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <utility>

#include "json/json_extract.h"
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
  }
  // The texts must reach the interesting paths, not only the empty result.
  EXPECT_GT(dictionaries, 1000);
}

// `open` `depth` times, then `middle`, then `close` `depth` times.
std::string Nested(const std::string& open, int depth, const std::string& middle,
                   const std::string& close) {
  std::string opens, closes;
  for (int i = 0; i < depth; ++i) opens += open, closes += close;
  return opens + middle + closes;
}

TEST(JsonRobustness, NestingDeeperThan512ThrowsAndNoDepthExhaustsTheStack) {
  const std::string too_deep = "JSON nested too deeply";
  const std::pair<std::string, std::string> rows[] = {
      {Nested(R"([{"a":)", 256, "1", "}]"), ""},  // arrays and objects count alike
      {Nested(R"([{"a":)", 256, "[1]", "}]"), too_deep},
      // Far deeper: unclosed openers and surplus closers nest nothing.
      {Nested("{", 100000, "", ""), ""},
      {Nested("", 100000, "", "}"), ""},
      {Nested("[{", 100000, "", "]]"), too_deep},
  };
  for (const auto& [text, ending] : rows) {
    // Each ends within 10 s, far above what a linear reader needs, even under the sanitizers.
    const auto begin = std::chrono::steady_clock::now();
    for (bool tree : {false, true}) {
      try {
        tree ? void(JSONExtract{text}) : void(JSON::JSONStringToTreeDictionary(text));
        EXPECT_EQ(ending, "") << text.substr(0, 12) << " " << text.size();
      } catch (const platform::RuntimeException& e) {
        EXPECT_EQ(e.what(), ending) << text.substr(0, 12) << " " << text.size();
      }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  }
}

}  // namespace
