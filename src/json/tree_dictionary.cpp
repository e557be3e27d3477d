#include "json/tree_dictionary.h"

#include <utility>

#include "json/json_extract.h"
#include "json/remove_escapes.h"
#include "platform/text.h"

namespace {

bool IsQuoted(std::string_view text) noexcept {
  return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

// The key of a child: its raw name without the quotation marks (if it has both), unescaped.
std::string KeyOf(std::string_view pname) {
  if (!pname.empty() && pname.front() == '"' && pname.back() == '"') {
    pname = pname.size() >= 2 ? pname.substr(1, pname.size() - 2) : std::string_view();
  }
  std::string key(pname);
  if (!key.empty()) {
    key.resize(static_cast<std::size_t>(
        JSON::remove_escapes(key.data(), static_cast<std::int64_t>(key.size()))));
  }
  return key;
}

}  // namespace

platform::Variant JSONExtract::as_variant() {
  if (end_token == start_token - 1) {
    if (close_bracket_type == "]") return platform::NewArray();
    if (close_bracket_type == "}") return platform::NewDictionary();
  }
  if (!children.empty()) {
    if (close_bracket_type == "}") {
      auto dictionary = platform::NewDictionary();
      for (const auto& child : children)
        dictionary->SetValue(KeyOf(child->pname), child->as_variant());
      return dictionary;
    }
    if (close_bracket_type == "]") {
      auto array = platform::NewArray();
      array->reserve(children.size());
      for (const auto& child : children) array->push_back(child->as_variant());
      return array;
    }
  }
  // A scalar. Escapes are resolved before the quotation marks come off, and literals are
  // compared without regard to case, as whole tokens.
  const std::string& text = as_string();
  platform::Variant value;
  if (platform::EqualsPlain(text, "true")) {
    value = true;
  } else if (platform::EqualsPlain(text, "false")) {
    value = false;
  } else if (!text.empty() && text.front() == '"' && text.back() == '"') {
    value = IsQuoted(text) ? text.substr(1, text.size() - 2) : std::string();
  } else if (platform::EqualsPlain(text, "null")) {
    value = nullptr;
  } else {
    value = platform::Val(text);
  }
  // A one-token array has no children; only its closer tells it from the scalar inside.
  if (close_bracket_type == "]") {
    auto array = platform::NewArray();
    array->push_back(std::move(value));
    return array;
  }
  return value;
}

namespace JSON {

std::shared_ptr<platform::Dictionary> JSONStringToTreeDictionary(const std::string& json) {
  JSONExtract tree(json);
  platform::Variant value = tree.as_variant();
  if (value.IsDictionary()) return value.DictionaryValue();
  return platform::NewDictionary();
}

}  // namespace JSON
