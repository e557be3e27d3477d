#pragma once
// The reader's tree scan in its plainest form, for checking the reader against: every level of
// the tree walks its whole range with a nesting count and recurses into each child, where the
// reader jumps over each child to its closer. Quadratic in the depth and unbounded in
// recursion, so only for short texts. Trees are compared as text: each node is
// "(start,end,closer,length:name" followed by its children and ")". Used by the random test and
// the fuzz target.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "canonical_form.h"
#include "json/json_extract.h"
#include "json/tree_dictionary.h"

namespace qem_test {

inline void AppendNode(std::string& text, std::int32_t start, std::int32_t end,
                       std::string_view close, std::string_view name) {
  text += "(" + std::to_string(start) + "," + std::to_string(end) + "," + std::string(close) + "," +
          std::to_string(name.size()) + ":" + std::string(name);
}

inline void NaiveTree(const std::vector<std::string_view>& t, std::int32_t start, std::int32_t end,
                      std::string_view close, std::string_view pname, std::string& text) {
  AppendNode(text, start, end, close, pname);
  int count = 0;
  std::int32_t element_start = start;
  std::string_view name = pname;
  for (std::int32_t i = start; end > start && i <= end; ++i) {
    const std::string_view x = t[i];
    if (x == "{" || x == "[") {
      if (++count == 1) element_start = i + 1;
    } else if (x == "}" || x == "]") {
      if (--count == 0) NaiveTree(t, element_start, i - 1, x, name, text);
    } else if (count == 0 && x == ":") {
      name = t[i - 1];
    } else if (count == 0 && x != "," && (i == end || t[i + 1] != ":")) {
      NaiveTree(t, i, i, "}", name, text);
    }
  }
  text += ')';
}

inline void TreeText(const JSONExtract& node, std::string& text) {
  AppendNode(text, node.start_token, node.end_token, node.close_bracket_type, node.pname);
  for (const auto& child : node.children) TreeText(*child, text);
  text += ')';
}

// The first way in which the reader's reading of `text` differs from the plain one, or "" when
// none does: the tree, and the dictionary, which must be what the tree gives. Sets `keys` to the
// number of keys in the dictionary. Throws what the reader throws.
inline std::string DifferenceFromPlain(const std::string& text, std::size_t& keys) {
  JSONExtract tree(text);
  std::string got, want;
  TreeText(tree, got);
  // The reader's rule: fewer than three tokens give the empty node (no range, no closer, no
  // name); otherwise the first and the last are dropped.
  const auto& tokens = tree.json_tokens->tokens;
  const auto size = static_cast<std::int32_t>(tokens.size());
  if (size < 3) {
    want = "(0,0,,0:)";
  } else {
    NaiveTree(tokens, 1, size - 2, "}", {}, want);
  }
  if (got != want) return "tree " + got + ", expected " + want;
  const auto direct = JSON::JSONStringToTreeDictionary(text);
  if (!direct) return "nil dictionary";
  keys = direct->KeyCount();
  const platform::Variant from_tree = tree.as_variant();
  const std::string read = qem_json_dump::CanonicalForm(direct);
  const std::string built =
      from_tree.IsDictionary() ? qem_json_dump::CanonicalForm(from_tree) : "{}";
  return read == built ? "" : "dictionary " + read + ", from the tree " + built;
}

}  // namespace qem_test
