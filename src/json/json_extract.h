#pragma once
// JSONExtract: the tree over a token array. A node stands for one value of the text; what it
// holds is a range of indices into the token array that all nodes of a tree share, plus the raw
// name token under which the value stands. Building the tree only counts brackets: no token is
// copied, nothing is unescaped, no number is read. It validates nothing.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "json/json_split.h"
#include "platform/variant.h"

class JSONExtract {
 public:
  // The child nodes in document order.
  std::vector<std::shared_ptr<JSONExtract>> children;
  // The token that closed this value: "}" or "]" for a container child; "}" on every other node
  // built over a range (scalars and the root included); empty on a node that was not.
  std::string_view close_bracket_type;
  // Index of the last token of the node's range, inclusive.
  std::int32_t end_token = 0;
  // The token array all nodes of one tree share; empty until a range is built.
  std::shared_ptr<const JSON::TokenArray> json_tokens;
  // The raw name token, quotation marks and escapes included, such as "obj_id" in its quotes;
  // empty on the root.
  std::string_view pname;
  // Index of the first token of the node's range.
  std::int32_t start_token = 0;
  // Cache of as_string; empty until it is filled.
  std::string unescaped;

  // An empty node: no range, no tokens, no children.
  JSONExtract();

  // The tree of a text: trims it, splits it and builds from the tokens. Throws
  // platform::RuntimeException("JSON nested too deeply") when containers nest deeper than 512
  // levels, so that no text can exhaust the stack; never reports bad content.
  explicit JSONExtract(std::string_view json);

  // The tree of a token array. With three tokens or more, the first and the last are taken for
  // the outer brackets, unseen, and the range between them is built; with fewer the node stays
  // empty. Linear in the number of tokens; throws as above.
  explicit JSONExtract(std::shared_ptr<const JSON::TokenArray> json_tokens);

  // The node for the range from start_token to end_token and, below it, all its children. The
  // running name starts as `pname`, which the tree copies. Throws as above, and
  // platform::OutOfBoundsException when a range that must be read lies outside the array.
  JSONExtract(std::shared_ptr<const JSON::TokenArray> json_tokens, std::int32_t start_token,
              std::int32_t end_token, std::string_view pname);

  JSONExtract(const JSONExtract&) = delete;
  JSONExtract& operator=(const JSONExtract&) = delete;

  // The tokens of the range run together, with escapes resolved; a string value keeps its
  // quotation marks. Empty for an empty range or a node without tokens. Cached in `unescaped`.
  const std::string& as_string();

  // The value of the node as the reader hands it out: a Dictionary for an object, an array for
  // an array, String, Boolean, nil or Double for a scalar. Recurses once per nesting level.
  platform::Variant as_variant();

  // The first child whose name is `name` in quotation marks (letter case ignored), or nil.
  // `name` is matched against the raw token, escapes unresolved.
  std::shared_ptr<JSONExtract> find_child_node(std::string_view name) const;

  // The as_string of the node that the dot-separated names lead to, or the empty string when
  // one of them is missing. An empty path gives this node's own as_string.
  std::string lookup(std::string_view path);

  // Construction of a child inside the tree; only the tree can make the key.
  class BuildKey {
    friend class JSONExtract;
    BuildKey() = default;
  };
  struct Shared;
  JSONExtract(BuildKey, const std::shared_ptr<const Shared>& shared, std::int32_t start_token,
              std::int32_t end_token, std::string_view pname, int depth);

 private:
  void build(std::int32_t start, std::int32_t end, std::string_view pname, int depth);

  // Tokens, bracket pairs and the root's name; every node of the tree keeps them alive, so the
  // views in `pname` and `close_bracket_type` stay valid as long as the node lives.
  std::shared_ptr<const Shared> shared_;
};
