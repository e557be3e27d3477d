#include "json/json_extract.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/exceptions.h"

namespace {

// What a test wants of one node: range, closer, raw name and number of children.
struct Shape {
  std::int32_t start;
  std::int32_t end;
  std::string close;
  std::string pname;
  std::size_t children;
};

void ExpectShape(const JSONExtract& node, const Shape& want, const std::string& where) {
  EXPECT_EQ(node.start_token, want.start) << where;
  EXPECT_EQ(node.end_token, want.end) << where;
  EXPECT_EQ(node.close_bracket_type, want.close) << where;
  EXPECT_EQ(node.pname, want.pname) << where;
  EXPECT_EQ(node.children.size(), want.children) << where;
}

struct TreeCase {
  std::string json;
  Shape root;
  std::vector<Shape> children;  // the root's children, in order
};

TEST(JsonExtract, RangesClosersAndNamesOfTheRootAndItsChildren) {
  const TreeCase cases[] = {
      {R"({"a":1,"b":"x"})",
       {1, 7, "}", "", 2},
       {{3, 3, "}", R"("a")", 0}, {7, 7, "}", R"("b")", 0}}},
      {R"({"a":1})", {1, 3, "}", "", 1}, {{3, 3, "}", R"("a")", 0}}},
      {R"({"a"})", {1, 1, "}", "", 0}, {}},
      {"[1,2]", {1, 3, "}", "", 2}, {{1, 1, "}", "", 0}, {3, 3, "}", "", 0}}},
      {R"({"a":[]})", {1, 4, "}", "", 1}, {{4, 3, "]", R"("a")", 0}}},
      {R"({"a":[7]})", {1, 5, "}", "", 1}, {{4, 4, "]", R"("a")", 0}}},
      {R"({"a":[7,8]})", {1, 7, "}", "", 1}, {{4, 6, "]", R"("a")", 2}}},
      {R"({"a":{1,2]})", {1, 7, "}", "", 1}, {{4, 6, "]", R"("a")", 2}}},
      {R"({"a":1,"a":2})",
       {1, 7, "}", "", 2},
       {{3, 3, "}", R"("a")", 0}, {7, 7, "}", R"("a")", 0}}},
      // A value without a name of its own stands under the running name.
      {R"({"a":1,2})", {1, 5, "}", "", 2}, {{3, 3, "}", R"("a")", 0}, {5, 5, "}", R"("a")", 0}}},
      // The name before a leading ":" is the token before the range.
      {"{:1}", {1, 2, "}", "", 1}, {{2, 2, "}", "{", 0}}},
      // A surplus closer stops the level until an opener brings the count back to zero; the
      // running name stays what it was.
      {R"({"x":1,],"y":2,[3,4],"z":5})",
       {1, 19, "}", "", 3},
       {{3, 3, "}", R"("x")", 0}, {12, 12, "}", R"("x")", 0}, {14, 14, "}", R"("x")", 0}}},
  };
  for (const auto& c : cases) {
    JSONExtract root(c.json);
    ExpectShape(root, c.root, c.json + " root");
    for (std::size_t i = 0; i < c.children.size() && i < root.children.size(); ++i) {
      ExpectShape(*root.children[i], c.children[i], c.json + " child " + std::to_string(i));
    }
  }
}

TEST(JsonExtract, ArrayElementsCarryTheArraysName) {
  JSONExtract root(R"({"a":[[1,2],[3]]})");
  ASSERT_EQ(root.children.size(), 1u);
  const JSONExtract& array = *root.children[0];
  ASSERT_EQ(array.children.size(), 2u);
  ExpectShape(*array.children[0], {5, 7, "]", R"("a")", 2}, "first");
  ExpectShape(*array.children[1], {11, 11, "]", R"("a")", 0}, "second");
  ExpectShape(*array.children[0]->children[1], {7, 7, "}", R"("a")", 0}, "inner");
}

TEST(JsonExtract, FewerThanThreeTokensLeaveTheNodeEmpty) {
  for (const char* json : {"{}", "", "{", "x"}) {
    JSONExtract root(json);
    EXPECT_EQ(root.start_token, 0) << json;
    EXPECT_EQ(root.end_token, 0) << json;
    EXPECT_EQ(root.close_bracket_type, "") << json;
    EXPECT_EQ(root.json_tokens->size(), 0) << json;
    EXPECT_TRUE(root.children.empty()) << json;
    EXPECT_EQ(root.as_string(), "") << json;
  }
}

TEST(JsonExtract, RangeConstructorStartsFromTheGivenName) {
  auto tokens = std::make_shared<const JSON::TokenArray>(
      JSON::JSON_Split(std::make_shared<const std::string>(R"({"a":[7,8]})")));
  JSONExtract node(tokens, 4, 6, R"("n")");
  ExpectShape(node, {4, 6, "}", R"("n")", 2}, "node");
  EXPECT_EQ(node.children[1]->pname, R"("n")");
  EXPECT_EQ(node.json_tokens, tokens);
  EXPECT_THROW(JSONExtract(tokens, 4, 9, ""), platform::OutOfBoundsException);
  EXPECT_THROW(JSONExtract(tokens, -1, 3, ""), platform::OutOfBoundsException);
  EXPECT_THROW(JSONExtract(nullptr, 0, 0, ""), platform::NilObjectException);
  // A ":" as the first token of the array has no token before it.
  EXPECT_THROW(JSONExtract(std::make_shared<const JSON::TokenArray>(
                               JSON::JSON_Split(std::make_shared<const std::string>(":1,"))),
                           0, 2, ""),
               platform::OutOfBoundsException);
}

TEST(JsonExtract, AsStringJoinsTheRangeResolvesEscapesAndKeepsQuotes) {
  JSONExtract root(R"({"a":"x\ny","b":{"c": 1 ,"d":[]}})");
  ASSERT_EQ(root.children.size(), 2u);
  EXPECT_EQ(root.children[0]->as_string(), "\"x\ny\"");
  EXPECT_EQ(root.children[1]->as_string(), R"("c": 1 ,"d":[])");
  // The empty array's range is empty.
  EXPECT_EQ(root.children[1]->children[1]->as_string(), "");
}

TEST(JsonExtract, AsStringUnescapesOnceAndCaches) {
  JSONExtract root(R"({"a":"\\n"})");
  JSONExtract& child = *root.children.at(0);
  EXPECT_EQ(child.as_string(), R"("\n")");
  EXPECT_EQ(child.unescaped, R"("\n")");
  // Unescaping again would turn the remaining \n into a line feed.
  EXPECT_EQ(child.as_string(), R"("\n")");
  child.unescaped = "cached";
  EXPECT_EQ(child.as_string(), "cached");
}

TEST(JsonExtract, FindChildNodeMatchesTheRawQuotedNameCaseBlind) {
  JSONExtract root(R"({"hello":1,"a\tb":2,"hello":3})");
  auto hello = root.find_child_node("hello");
  ASSERT_TRUE(hello);
  EXPECT_EQ(hello->as_string(), "1");  // the first of two
  EXPECT_EQ(root.find_child_node("HELLO"), hello);
  EXPECT_TRUE(root.find_child_node(R"(a\tb)"));
  EXPECT_FALSE(root.find_child_node("a\tb"));
  EXPECT_FALSE(root.find_child_node("missing"));
  EXPECT_FALSE(root.find_child_node(R"("hello")"));
}

TEST(JsonExtract, LookupFollowsDottedNames) {
  struct Case {
    const char* json;
    const char* path;
    const char* result;
  } cases[] = {
      {R"({"a":{"b":"x"}})", "a.b", R"("x")"}, {R"({"a":{"b":"x"}})", "a.c", ""},
      {R"({"a":{"b":"x"}})", "a.b.c", ""},     {R"({"a":{"b":"x"}})", "c.b", ""},
      {R"({"a":{"b":1}})", "a", R"("b":1)"},   {R"({"a":{"B":{"c":true}}})", "A.b.C", "true"},
      {R"({"a":""})", "a", R"("")"},           {R"({"a":1})", "", R"("a":1)"},
      {R"({"a":{"":5}})", "a.", "5"},
  };
  for (const auto& c : cases) {
    JSONExtract root(c.json);
    EXPECT_EQ(root.lookup(c.path), c.result) << c.json << " at " << c.path;
  }
}

}  // namespace
