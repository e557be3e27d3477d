#include "json/tree_dictionary.h"

#include <gtest/gtest.h>

#include "text_table.h"

#include <string>

#include "canonical_form.h"
#include "platform/exceptions.h"

namespace {

// The reader's result in its one-line canonical form, which shows each value's type: strings
// quoted, numbers bare, true/false/null, {} and [].
std::string Read(const std::string& json) {
  return qem_json_dump::CanonicalForm(platform::Variant(JSON::JSONStringToTreeDictionary(json)));
}

void ExpectReads(const std::vector<qem_test::TextCase>& cases) {
  qem_test::ExpectEach(cases, Read);
}

TEST(TreeDictionary, ScalarsGetTheirTypes) {
  ExpectReads({
      {R"({"a":1})", R"({"a": 1})"},
      {R"({"obj_id":"x1","cmd":"create","type":"wprogress"})",
       R"({"obj_id": "x1", "cmd": "create", "type": "wprogress"})"},
      {R"({"a":1.5,"b":-3,"c":1e3,"d":&hFF})", R"({"a": 1.5, "b": -3, "c": 1000, "d": 255})"},
      {R"({"a":12abc,"b":abc,"c":tru})", R"({"a": 12, "b": 0, "c": 0})"},
      {R"({"a":TRUE,"b":False,"c":Null,"d":"true"})",
       R"({"a": true, "b": false, "c": null, "d": "true"})"},
      // Literals are compared as whole tokens: white space next to one makes it a number.
      {R"({"a": true })", R"({"a": 0})"},
      {R"({"a":""})", R"({"a": ""})"},
  });
}

TEST(TreeDictionary, StringsAndKeysAreUnescaped) {
  ExpectReads({
      {R"({"a":"\u00e9"})", "{\"a\": \"\xC3\xA9\"}"},
      {R"({"a\tb":1})", R"({"a\tb": 1})"},
      {R"({"a\u0041":"\"q\""})", R"({"aA": "\"q\""})"},
      {R"({"a":"\\"})", R"({"a": "\\"})"},
      {R"({"a":"\uD83D\uDE00"})", "{\"a\": \"\xF0\x9F\x98\x80\"}"},
      {R"({"":1})", R"({"": 1})"},
      // A name without quotation marks is used as it is.
      {R"({a:1})", R"({"a": 1})"},
  });
}

TEST(TreeDictionary, ContainersNest) {
  ExpectReads({
      {R"({"a":{"b":{"c":"d"}}})", R"({"a": {"b": {"c": "d"}}})"},
      {R"({"a":[],"b":{}})", R"({"a": [], "b": {}})"},
      {R"({"a":[7],"b":["x"],"c":[null]})", R"({"a": [7], "b": ["x"], "c": [null]})"},
      {R"({"a":[1,"b",true,null]})", R"({"a": [1, "b", true, null]})"},
      {R"({"a":[{"b":1},{"c":2}]})", R"({"a": [{"b": 1}, {"c": 2}]})"},
      {R"({"a":[[1,2],[3]]})", R"({"a": [[1, 2], [3]]})"},
      // A one-token object is its value; closers of either kind close any opener.
      {R"({"a":{7},"b":{1,2]})", R"({"a": 7, "b": [1, 2]})"},
      {R"({"btn_spec":[{"id":"stop","text":"Stop"}]})",
       R"({"btn_spec": [{"id": "stop", "text": "Stop"}]})"},
  });
}

TEST(TreeDictionary, KeysFollowTheLooseRules) {
  ExpectReads({
      {R"({"a":1,"a":2})", R"({"a": 2})"},
      {R"({"a":1,"A":2})", R"({"a": 2})"},
      {R"({"a":"x" "b":2})", R"({"a": "x", "b": 2})"},
      {R"({"a":true,})", R"({"a": true})"},
      {R"({"a":1,2})", R"({"a": 2})"},
  });
}

TEST(TreeDictionary, BadInputGivesEmptyOrPartialDictionaries) {
  ExpectReads({
      {"", "{}"},
      {" \n\t", "{}"},
      {"just words", "{}"},
      {"{}", "{}"},
      {R"({"hello"})", "{}"},
      {"[1,2]", R"({"": 2})"},
      {R"({"a":1)", "{}"},
      {R"({"a":1,"b":2)", R"({"a": "b"})"},
      {R"({"a":})", "{}"},
      {"}}}]]{{", "{}"},
  });
}

TEST(TreeDictionary, ResultIsNeverNilAndHoldsFrameworkValuesOnly) {
  auto result = JSON::JSONStringToTreeDictionary(R"({"p":0.25,"s":"x","l":[{"k":false}]})");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->Value("p").type(), platform::Variant::Type::Double);
  EXPECT_EQ(result->Value("s").type(), platform::Variant::Type::String);
  auto list = result->Value("l").ArrayValue();
  ASSERT_EQ(list->size(), 1u);
  EXPECT_EQ((*list)[0].DictionaryValue()->Value("K").type(), platform::Variant::Type::Boolean);
  EXPECT_TRUE(JSON::JSONStringToTreeDictionary("nothing"));
}

std::string Nested(int depth, const std::string& open, const std::string& inner,
                   const std::string& close) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += open;
  text += inner;
  for (int i = 0; i < depth; ++i) text += close;
  return text;
}

TEST(TreeDictionary, NestingDeeperThan512ContainersThrows) {
  EXPECT_NO_THROW(JSON::JSONStringToTreeDictionary(Nested(512, "[", "1", "]")));
  EXPECT_NO_THROW(JSON::JSONStringToTreeDictionary(Nested(512, R"({"a":)", "1", "}")));
  for (const std::string& text :
       {Nested(513, "[", "1", "]"), Nested(513, R"({"a":)", "1", "}"), Nested(513, "[", "", "]")}) {
    try {
      JSON::JSONStringToTreeDictionary(text);
      ADD_FAILURE() << "no exception at depth 513";
    } catch (const platform::RuntimeException& e) {
      EXPECT_STREQ(e.what(), "JSON nested too deeply");
    }
  }
  // Only containers count: 511 levels below the top are allowed.
  auto deep = JSON::JSONStringToTreeDictionary(Nested(512, R"({"a":)", "1", "}"));
  for (int level = 1; level < 512; ++level) deep = deep->Value("a").DictionaryValue();
  EXPECT_EQ(deep->Value("a").DoubleValue(), 1.0);
}

}  // namespace
