// The tree's own services; its shape is checked against the plain scan in robustness_test.cpp.

#include "json/json_extract.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "platform/exceptions.h"

namespace {

TEST(JsonExtract, RangeNodeStartsFromItsNameChecksItsBoundsAndOutlivesItsTree) {
  std::shared_ptr<JSONExtract> child;
  {
    auto tokens = std::make_shared<const JSON::TokenArray>(
        JSON::JSON_Split(std::make_shared<const std::string>(R"({"a":[7,8]})")));
    EXPECT_THROW(JSONExtract(tokens, 4, 9, ""), platform::OutOfBoundsException);
    EXPECT_THROW(JSONExtract(tokens, -1, 3, ""), platform::OutOfBoundsException);
    EXPECT_THROW(JSONExtract(nullptr, 0, 0, ""), platform::NilObjectException);
    JSONExtract node(tokens, 4, 6, std::string("\"named\""));
    child = node.children.at(1);
  }
  EXPECT_EQ(child->pname, "\"named\"");
  EXPECT_EQ(child->as_string(), "8");
}

TEST(JsonExtract, AsStringJoinsTheRangeUnescapedOnceAndLookupFollowsRawNamesCaseBlind) {
  JSONExtract root(R"({"a":"\\n","b":{"c": 1 ,"d":[]}})");
  ASSERT_EQ(root.children.size(), 2u);
  EXPECT_EQ(root.children[1]->as_string(), R"("c": 1 ,"d":[])");
  // Unescaping the cached text again would turn the \n left over into a line feed.
  EXPECT_EQ(root.children[0]->as_string(), R"("\n")");
  EXPECT_EQ(root.children[0]->as_string(), R"("\n")");
  // Lookup follows raw names, case-blind.
  JSONExtract tree(R"({"a":{"B":{"c":true},"x\ty":"v"},"a":2})");
  const std::pair<std::string, std::string> rows[] = {
      {"a.b.C", "true"}, {"A.B", R"("c":true)"}, {R"(a.x\ty)", R"("v")"}, {"a.x\ty", ""},
      {"a.c", ""},       {"a.B.c.d", ""},
  };
  for (const auto& [path, want] : rows) EXPECT_EQ(tree.lookup(path), want) << "path: " << path;
}

}  // namespace
