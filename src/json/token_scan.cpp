#include "json/token_scan.h"

#include <utility>

#include "json/remove_escapes.h"
#include "platform/text.h"

namespace JSON::scan {

std::vector<std::int32_t> MatchClosers(const TokenArray& tokens) {
  std::vector<std::int32_t> closer(tokens.tokens.size(), -1);
  std::vector<std::int32_t> open;
  for (std::int32_t i = 0; i < tokens.size(); ++i) {
    if (IsOpener(tokens[i])) {
      open.push_back(i);
    } else if (IsCloser(tokens[i]) && !open.empty()) {
      closer[open.back()] = i;
      open.pop_back();
    }
  }
  return closer;
}

namespace {

void Unescape(std::string& text) {
  if (text.empty()) return;
  text.resize(static_cast<std::size_t>(
      remove_escapes(text.data(), static_cast<std::int64_t>(text.size()))));
}

}  // namespace

platform::Variant ScalarValue(std::string_view text) {
  if (platform::EqualsPlain(text, "true")) return true;
  if (platform::EqualsPlain(text, "false")) return false;
  if (!text.empty() && text.front() == '"' && text.back() == '"') {
    // Escapes were resolved first; only now do the quotation marks come off.
    if (text.size() < 2) return std::string();
    return std::string(text.substr(1, text.size() - 2));
  }
  if (platform::EqualsPlain(text, "null")) return nullptr;
  return platform::Val(text);
}

platform::Variant TokenValue(std::string_view token) {
  if (token.find('\\') == std::string_view::npos) return ScalarValue(token);
  std::string text(token);
  Unescape(text);
  return ScalarValue(text);
}

std::string_view KeyView(std::string_view pname, std::string& storage) {
  if (!pname.empty() && pname.front() == '"' && pname.back() == '"') {
    pname = pname.size() >= 2 ? pname.substr(1, pname.size() - 2) : std::string_view();
  }
  if (pname.find('\\') == std::string_view::npos) return pname;
  storage.assign(pname);
  Unescape(storage);
  return storage;
}

std::string JoinUnescaped(const TokenArray& tokens, std::int32_t first, std::int32_t last) {
  std::string text;
  if (first == last) {
    text = tokens[first];
  } else {
    std::size_t total = 0;
    for (std::int32_t i = first; i <= last; ++i) total += tokens[i].size();
    text.reserve(total);
    for (std::int32_t i = first; i <= last; ++i) text.append(tokens[i]);
  }
  Unescape(text);
  return text;
}

}  // namespace JSON::scan
