#pragma once
// The reader's splitter and tree scan in their plainest form, for checking the reader against:
// the splitter byte by byte with a running count of backslashes; every level of the tree walks
// its whole range with a nesting count and recurses into each child. Quadratic in the depth and
// unbounded in recursion, so only for short texts. Trees are compared as text: each node is
// "(start,end,closer,length:name" followed by its children and ")". Used by the random test and
// the fuzz target.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "canonical_form.h"
#include "json/json_extract.h"
#include "json/tree_dictionary.h"

namespace qem_test {

inline std::vector<std::string_view> NaiveSplit(std::string_view bytes) {
  std::vector<std::string_view> tokens;
  std::size_t pending_start = 0;
  std::size_t backslash_run = 0;
  bool in_string = false;
  for (std::size_t index = 0; index < bytes.size(); ++index) {
    const char c = bytes[index];
    if (in_string && c == '"' && backslash_run % 2 == 0) {
      in_string = false;
      tokens.push_back(bytes.substr(pending_start, index - pending_start + 1));
      pending_start = index + 1;
    } else if (!in_string && c == '"') {
      in_string = true;
      pending_start = index;
    } else if (!in_string && std::string_view("{}[]:,").find(c) != std::string_view::npos) {
      if (pending_start < index) {
        std::string_view bare = bytes.substr(pending_start, index - pending_start);
        if (bare.find_first_not_of(" \t\n\r\v\f") != std::string_view::npos) {
          tokens.push_back(bare);
        }
      }
      tokens.push_back(bytes.substr(index, 1));
      pending_start = index + 1;
    }
    backslash_run = c == '\\' ? backslash_run + 1 : 0;
  }
  return tokens;
}

inline void AppendNode(std::string& text, std::int32_t start, std::int32_t end,
                       std::string_view close, std::string_view name) {
  text.append(1, '(').append(std::to_string(start)).append(1, ',').append(std::to_string(end));
  text.append(1, ',').append(close).append(1, ',').append(std::to_string(name.size()));
  text.append(1, ':').append(name);
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

// The plain tree of a whole token array, under the same rule as the reader: fewer than three
// tokens give the empty node (no range, no closer, no name); otherwise the first and the last
// are dropped.
inline std::string NaiveTree(const std::vector<std::string_view>& tokens) {
  const auto size = static_cast<std::int32_t>(tokens.size());
  if (size < 3) return "(0,0,,0:)";
  std::string text;
  NaiveTree(tokens, 1, size - 2, "}", {}, text);
  return text;
}

inline void TreeText(const JSONExtract& node, std::string& text) {
  AppendNode(text, node.start_token, node.end_token, node.close_bracket_type, node.pname);
  for (const auto& child : node.children) TreeText(*child, text);
  text += ')';
}

// The first way in which the reader's reading of `text` differs from the plain one, or "" when
// none does: the tokens, the tree, and the dictionary, which must be what the tree gives. Sets
// `keys` to the number of keys in the dictionary. Throws what the reader throws.
inline std::string DifferenceFromPlain(const std::string& text, std::size_t& keys) {
  if (JSON::JSON_Split(std::make_shared<const std::string>(text)).tokens != NaiveSplit(text)) {
    return "tokens differ";
  }
  JSONExtract tree(text);
  std::string got;
  TreeText(tree, got);
  const std::string want = NaiveTree(tree.json_tokens->tokens);
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
