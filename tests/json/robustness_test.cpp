// No input may crash or hang the reader, and its tokens and tree must be the ones the plain
// byte-by-byte split and level-by-level scan give.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "canonical_form.h"
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
    JSONExtract tree(text);
    ASSERT_EQ(JSON::JSON_Split(std::make_shared<const std::string>(text)).tokens,
              qem_test::NaiveSplit(text))
        << "text: " << text;
    const std::string diff = qem_test::CompareWithNaive(tree);
    ASSERT_EQ(diff, "") << "text: " << text;
    // The direct reading gives exactly what the tree gives.
    auto result = JSON::JSONStringToTreeDictionary(text);
    ASSERT_TRUE(result) << "text: " << text;
    platform::Variant from_tree = tree.as_variant();
    ASSERT_EQ(qem_json_dump::CanonicalForm(result),
              from_tree.IsDictionary() ? qem_json_dump::CanonicalForm(from_tree) : "{}")
        << "text: " << text;
    if (result->KeyCount() > 0) ++dictionaries;

    // Unescaping never grows the text.
    std::string buffer = text;
    auto n = JSON::remove_escapes(buffer.data(), static_cast<std::int64_t>(buffer.size()));
    ASSERT_GE(n, 0);
    ASSERT_LE(n, static_cast<std::int64_t>(text.size()));
  }
  // The texts must reach the interesting paths, not only the empty result.
  EXPECT_GT(dictionaries, 1000);
}

// Deep texts must end normally or in the depth exception, and fast: the time limit is far above
// what a linear reader needs, even under the sanitizers.
void ExpectEndsInOrder(const std::string& text) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    auto result = JSON::JSONStringToTreeDictionary(text);
    EXPECT_TRUE(result);
  } catch (const platform::RuntimeException& e) {
    EXPECT_STREQ(e.what(), "JSON nested too deeply");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(JsonRobustness, HugeDepthEndsNormallyOrInTheDepthException) {
  constexpr int kDepth = 100000;
  ExpectEndsInOrder(std::string(kDepth, '{'));
  ExpectEndsInOrder(std::string(kDepth, '['));
  ExpectEndsInOrder(std::string(kDepth, '}'));
  ExpectEndsInOrder(std::string(kDepth, '[') + std::string(kDepth, ']'));
  std::string objects;
  for (int i = 0; i < kDepth; ++i) objects += R"({"a":)";
  objects += "1" + std::string(kDepth, '}');
  ExpectEndsInOrder(objects);
  std::string alternating;
  for (int i = 0; i < kDepth; ++i) alternating += "[{";
  ExpectEndsInOrder(alternating + std::string(2 * kDepth, ']'));
}

TEST(JsonRobustness, ATreeHeldAloneOutlivesTheRestOfItsTree) {
  std::shared_ptr<JSONExtract> child;
  {
    auto tokens = std::make_shared<const JSON::TokenArray>(
        JSON::JSON_Split(std::make_shared<const std::string>(R"({"a":[7,8]})")));
    JSONExtract node(tokens, 4, 6, std::string("\"named\""));
    child = node.children.at(1);
  }
  EXPECT_EQ(child->pname, "\"named\"");
  EXPECT_EQ(child->as_string(), "8");
}

}  // namespace
