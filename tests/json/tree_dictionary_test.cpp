#include "json/tree_dictionary.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "canonical_form.h"

namespace {

// The reader's result in its one-line canonical form, which shows each value's type: strings
// quoted, numbers bare, true/false/null, {} and [].
std::string Read(const std::string& json) {
  return qem_json_dump::CanonicalForm(platform::Variant(JSON::JSONStringToTreeDictionary(json)));
}

using Rows = std::pair<std::string, std::string>[];

TEST(TreeDictionary, ValuesGetTheirTypesAndStringsAndKeysAreUnescaped) {
  const Rows rows = {
      {R"({"id":"x1","a":1.5,"b":-3,"c":1e3,"d":&hFF,"e":12abc,"f":abc})",
       R"({"id": "x1", "a": 1.5, "b": -3, "c": 1000, "d": 255, "e": 12, "f": 0})"},
      // Literals match whole tokens, letter case ignored.
      {R"({"a":TRUE,"b":False,"c":Null,"d":"true","e": true })",
       R"({"a": true, "b": false, "c": null, "d": "true", "e": 0})"},
      {R"({"a\u0041":"\"q\"",c:""})", R"({"aA": "\"q\"", "c": ""})"},
      // Quoted back: control characters and DEL escaped, other bytes as they are.
      {R"({"s":"\\\b\f\n\r\t\u0001\u007f\u00e9"})",
       "{\"s\": \"\\\\\\b\\f\\n\\r\\t\\u0001\\u007f\xC3\xA9\"}"},
      {R"({"a":{"b":{"c":"d"}},"e":[],"f":{},"g":[1,"x",null,{"d":1},[2]]})",
       R"({"a": {"b": {"c": "d"}}, "e": [], "f": {}, "g": [1, "x", null, {"d": 1}, [2]]})"},
      // A one-token object is its value; closers of either kind close any opener.
      {R"({"a":{7},"b":{1,2]})", R"({"a": 7, "b": [1, 2]})"},
  };
  for (const auto& [text, want] : rows) EXPECT_EQ(Read(text), want) << "input: " << text;
}

TEST(TreeDictionary, LooseOrBrokenTextsGiveWhatTheyCan) {
  const Rows rows = {
      // The later of two keys that differ only in letter case wins.
      {R"({"a":1,"A":2})", R"({"a": 2})"},
      {R"({"a":"x" "b":true,})", R"({"a": "x", "b": true})"},
      {R"({"a":1,2})", R"({"a": 2})"},
      {"[1,2]", R"({"": 2})"},
      {R"({"a":1,"b":2)", R"({"a": "b"})"},
      {"just words", "{}"},
      {"}}}]]{{", "{}"},
  };
  for (const auto& [text, want] : rows) EXPECT_EQ(Read(text), want) << "input: " << text;
}

}  // namespace
