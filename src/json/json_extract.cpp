#include "json/json_extract.h"

#include <utility>

#include "json/remove_escapes.h"
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

bool IsOpener(std::string_view t) noexcept {
  return t.size() == 1 && (t[0] == '{' || t[0] == '[');
}

bool IsCloser(std::string_view t) noexcept {
  return t.size() == 1 && (t[0] == '}' || t[0] == ']');
}

bool IsPunct(std::string_view t, char c) noexcept {
  return t.size() == 1 && t[0] == c;
}

const std::shared_ptr<const JSON::TokenArray>& EmptyTokens() {
  static const auto empty = std::make_shared<const JSON::TokenArray>();
  return empty;
}

std::shared_ptr<const JSONExtract::Shared> MakeShared(
    std::shared_ptr<const JSON::TokenArray> tokens, std::string_view top_name) {
  auto shared = std::make_shared<JSONExtract::Shared>();
  shared->top_name = top_name;
  const JSON::TokenArray& t = *tokens;
  shared->closer.assign(t.tokens.size(), -1);
  std::vector<std::int32_t> open;
  for (std::int32_t i = 0; i < t.size(); ++i) {
    if (IsOpener(t[i])) {
      open.push_back(i);
    } else if (IsCloser(t[i]) && !open.empty()) {
      shared->closer[open.back()] = i;
      open.pop_back();
    }
  }
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

// The level-by-level scan of the range: a nesting count over the tokens, children made where it
// returns to zero, scalars made at count zero, names taken from the token before each ":".
// Where the count rises from 0 to 1, the scan jumps straight to the matching closer: the tokens
// between change nothing at this level. So every token is looked at on one level only, and the
// whole tree costs time linear in the number of tokens.
void JSONExtract::build(std::int32_t start, std::int32_t end, std::string_view name, int depth) {
  start_token = start;
  end_token = end;
  pname = name;
  close_bracket_type = kCloseBrace;
  if (end <= start) return;

  const JSON::TokenArray& tokens = *shared_->tokens;
  const std::vector<std::int32_t>& closer = shared_->closer;
  // Never above 0 at the top of the loop: a rise to 1 is settled at once by the jump.
  std::int32_t count = 0;
  std::string_view running_name = name;
  for (std::int32_t i = start; i <= end; ++i) {
    const std::string_view t = tokens[i];
    if (IsOpener(t)) {
      if (++count != 1) continue;
      const std::int32_t j = closer[i];
      // No closer inside the range: the count stays above 0 to its end, nothing more happens.
      if (j < 0 || j > end) break;
      if (depth >= kMaxDepth) throw platform::RuntimeException("JSON nested too deeply");
      auto child =
          std::make_shared<JSONExtract>(BuildKey{}, shared_, i + 1, j - 1, running_name, depth + 1);
      child->close_bracket_type = tokens[j];
      children.push_back(std::move(child));
      count = 0;
      i = j;
    } else if (IsCloser(t)) {
      --count;  // from 0 or below: a surplus closer, no child
    } else if (count != 0 || IsPunct(t, ',')) {
      // inside a surplus-closer stretch, or a separator
    } else if (IsPunct(t, ':')) {
      if (i == 0) throw platform::OutOfBoundsException("JSONExtract: no name before \":\"");
      running_name = tokens[i - 1];
    } else if (i == end || !IsPunct(tokens[i + 1], ':')) {
      children.push_back(
          std::make_shared<JSONExtract>(BuildKey{}, shared_, i, i, running_name, depth + 1));
    }
  }
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
  std::size_t total = 0;
  for (std::int32_t i = start_token; i <= end_token; ++i) total += tokens[i].size();
  unescaped.reserve(total);
  for (std::int32_t i = start_token; i <= end_token; ++i) unescaped.append(tokens[i]);
  if (!unescaped.empty()) {
    auto n = JSON::remove_escapes(unescaped.data(), static_cast<std::int64_t>(unescaped.size()));
    unescaped.resize(static_cast<std::size_t>(n));
  }
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
