#pragma once
// The reader's splitter and tree scan in their plainest form, for checking the reader against:
// the splitter byte by byte with a running count of backslashes; every level of the tree walks
// its whole range with a nesting count and recurses into each child. Quadratic in the depth and
// unbounded in recursion, so only for short texts.

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "json/json_extract.h"

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

struct NaiveNode {
  std::int32_t start = 0;
  std::int32_t end = 0;
  std::string_view close = "}";
  std::string_view pname;
  std::vector<NaiveNode> children;
};

inline NaiveNode NaiveBuild(const std::vector<std::string_view>& t, std::int32_t start,
                            std::int32_t end, std::string_view pname) {
  NaiveNode node{start, end, "}", pname, {}};
  if (end <= start) return node;
  int count = 0;
  std::int32_t element_start = start;
  std::string_view name = pname;
  for (std::int32_t i = start; i <= end; ++i) {
    const std::string_view x = t[i];
    if (x == "{" || x == "[") {
      if (++count == 1) element_start = i + 1;
    } else if (x == "}" || x == "]") {
      if (--count == 0) {
        node.children.push_back(NaiveBuild(t, element_start, i - 1, name));
        node.children.back().close = x;
        element_start = i + 1;
      }
    } else if (count == 0 && x == ",") {
      element_start = i + 1;
    } else if (count == 0 && x == ":") {
      name = t[i - 1];
      element_start = i + 1;
    } else if (count == 0 && (i == end || t[i + 1] != ":")) {
      node.children.push_back(NaiveBuild(t, i, i, name));
      element_start = i + 1;
    }
  }
  return node;
}

// The first difference between the two trees as text, or the empty string when they agree.
inline std::string CompareTrees(const NaiveNode& want, const JSONExtract& got,
                                const std::string& path = "root") {
  std::ostringstream diff;
  if (want.start != got.start_token || want.end != got.end_token) {
    diff << path << ": range " << got.start_token << ".." << got.end_token << ", expected "
         << want.start << ".." << want.end;
  } else if (want.close != got.close_bracket_type) {
    diff << path << ": closer " << got.close_bracket_type << ", expected " << want.close;
  } else if (want.pname != got.pname) {
    diff << path << ": name " << got.pname << ", expected " << want.pname;
  } else if (want.children.size() != got.children.size()) {
    diff << path << ": " << got.children.size() << " children, expected " << want.children.size();
  } else {
    for (std::size_t i = 0; i < want.children.size(); ++i) {
      std::string inner =
          CompareTrees(want.children[i], *got.children[i], path + "/" + std::to_string(i));
      if (!inner.empty()) return inner;
    }
  }
  return diff.str();
}

// The naive tree of a whole token array, under the same rule as the reader: fewer than three
// tokens give no range; otherwise the first and the last are dropped.
inline std::string CompareWithNaive(const JSONExtract& tree) {
  const auto& tokens = tree.json_tokens->tokens;
  if (tokens.size() < 3) {
    return tree.children.empty() && tree.close_bracket_type.empty() ? "" : "root not empty";
  }
  return CompareTrees(NaiveBuild(tokens, 1, static_cast<std::int32_t>(tokens.size()) - 2, {}),
                      tree);
}

}  // namespace qem_test
