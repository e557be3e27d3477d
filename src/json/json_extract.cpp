#include "json/json_extract.h"

#include <utility>

#include "json/token_scan.h"
#include "platform/exceptions.h"
#include "platform/text.h"

// What all nodes of one tree share: the tokens; for each opening bracket the index of the
// closing bracket that brings the count back to zero (any closer closes any opener), -1 when
// none does and for every other token; and the name the top node of the tree was given.
struct JSONExtract::Shared {
  std::shared_ptr<const JSON::TokenArray> tokens;
  std::vector<std::int32_t> closer;
  std::string top_name;
};

namespace {

const std::shared_ptr<const JSON::TokenArray>& EmptyTokens() {
  static const auto empty = std::make_shared<const JSON::TokenArray>();
  return empty;
}

std::shared_ptr<const JSONExtract::Shared> MakeShared(
    std::shared_ptr<const JSON::TokenArray> tokens, std::string_view top_name) {
  auto shared = std::make_shared<JSONExtract::Shared>();
  shared->top_name = top_name;
  shared->closer = JSON::scan::MatchClosers(*tokens);
  shared->tokens = std::move(tokens);
  return shared;
}

constexpr std::string_view kCloseBrace = "}";

}  // namespace

JSONExtract::JSONExtract() : json_tokens(EmptyTokens()) {}

JSONExtract::JSONExtract(std::string_view json)
    : JSONExtract(std::make_shared<const JSON::TokenArray>(
          JSON::JSON_Split(std::make_shared<const std::string>(platform::TrimView(json))))) {}

JSONExtract::JSONExtract(std::shared_ptr<const JSON::TokenArray> tokens)
    : json_tokens(EmptyTokens()) {
  if (!tokens || tokens->size() < 3) return;
  const std::int32_t last = tokens->size() - 1;
  shared_ = MakeShared(std::move(tokens), {});
  json_tokens = shared_->tokens;
  build(1, last - 1, {}, 1);
}

JSONExtract::JSONExtract(std::shared_ptr<const JSON::TokenArray> tokens, std::int32_t start,
                         std::int32_t end, std::string_view name)
    : json_tokens(EmptyTokens()) {
  if (!tokens) throw platform::NilObjectException("JSONExtract: no tokens");
  if (start <= end && (start < 0 || end >= tokens->size())) {
    throw platform::OutOfBoundsException("JSONExtract: token range out of bounds");
  }
  shared_ = MakeShared(std::move(tokens), name);
  json_tokens = shared_->tokens;
  build(start, end, shared_->top_name, 1);
}

JSONExtract::JSONExtract(BuildKey, const std::shared_ptr<const Shared>& shared, std::int32_t start,
                         std::int32_t end, std::string_view name, int depth)
    : json_tokens(shared->tokens), shared_(shared) {
  build(start, end, name, depth);
}

void JSONExtract::build(std::int32_t start, std::int32_t end, std::string_view name, int depth) {
  start_token = start;
  end_token = end;
  pname = name;
  close_bracket_type = kCloseBrace;
  JSON::scan::ScanRange(
      *shared_->tokens, shared_->closer, start, end, name,
      [&](std::int32_t first, std::int32_t last, std::string_view child_name,
          std::string_view closer) {
        JSON::scan::CheckDepth(depth + 1);
        auto child =
            std::make_shared<JSONExtract>(BuildKey{}, shared_, first, last, child_name, depth + 1);
        child->close_bracket_type = closer;
        children.push_back(std::move(child));
      },
      [&](std::int32_t index, std::string_view child_name) {
        children.push_back(std::make_shared<JSONExtract>(BuildKey{}, shared_, index, index,
                                                         child_name, depth + 1));
      });
}

const std::string& JSONExtract::as_string() {
  if (end_token < start_token || json_tokens->tokens.empty()) {
    unescaped.clear();
    return unescaped;
  }
  if (!unescaped.empty()) return unescaped;
  const JSON::TokenArray& tokens = *json_tokens;
  if (start_token < 0 || end_token >= tokens.size()) {
    throw platform::OutOfBoundsException("JSONExtract: token range out of bounds");
  }
  unescaped = JSON::scan::JoinUnescaped(tokens, start_token, end_token);
  return unescaped;
}

std::shared_ptr<JSONExtract> JSONExtract::find_child_node(std::string_view name) const {
  std::string wanted;
  wanted.reserve(name.size() + 2);
  wanted.append(1, '"').append(name).append(1, '"');
  for (const auto& child : children) {
    if (platform::EqualsPlain(child->pname, wanted)) return child;
  }
  return nullptr;
}

std::string JSONExtract::lookup(std::string_view path) {
  if (path.empty()) return as_string();
  JSONExtract* current = this;
  std::shared_ptr<JSONExtract> found;
  while (true) {
    const std::size_t dot = path.find('.');
    found = current->find_child_node(path.substr(0, dot));
    if (!found) return {};
    current = found.get();
    if (dot == std::string_view::npos) break;
    path.remove_prefix(dot + 1);
  }
  return current->as_string();
}
