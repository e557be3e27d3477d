// No input may crash or hang the reader; its tree must be the one the plain level-by-level scan
// gives, and its dictionary the one the tree gives.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
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

// What reading ends in: "" when it ends normally, else what it threw. Within 10 s, far above what
// a linear reader needs, even under the sanitizers.
std::string Ending(const std::function<void()>& read) {
  const auto begin = std::chrono::steady_clock::now();
  std::string thrown;
  try {
    read();
  } catch (const platform::RuntimeException& e) {
    thrown = e.what();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  return thrown;
}

TEST(JsonRobustness, NestingDeeperThan512ThrowsAndNoDepthExhaustsTheStack) {
  const std::string too_deep = "JSON nested too deeply";
  for (const auto& [open, close] : {std::pair{"[", "]"}, std::pair{R"({"a":)", "}"}}) {
    std::string text = "1";
    for (int depth = 0; depth < 512; ++depth) text = open + text + close;
    EXPECT_EQ(Ending([&] { JSON::JSONStringToTreeDictionary(text); }), "") << open;
    text = open + text + close;
    EXPECT_EQ(Ending([&] { JSON::JSONStringToTreeDictionary(text); }), too_deep) << open;
  }
  // Unclosed openers and surplus closers too; the tree is held to the same limit.
  constexpr int kDepth = 100000;
  const std::string arrays = std::string(kDepth, '[') + std::string(kDepth, ']');
  std::string objects, alternating;
  for (int i = 0; i < kDepth; ++i) objects += R"({"a":)";
  for (int i = 0; i < kDepth; ++i) alternating += "[{";
  for (const std::string& text :
       {std::string(kDepth, '{'), std::string(kDepth, '}'), arrays,
        objects + "1" + std::string(kDepth, '}'), alternating + std::string(2 * kDepth, ']')}) {
    const std::string ending = Ending([&] { JSON::JSONStringToTreeDictionary(text); });
    EXPECT_TRUE(ending.empty() || ending == too_deep) << ending;
  }
  EXPECT_EQ(Ending([&] { JSONExtract tree(arrays); }), too_deep);
}

}  // namespace
