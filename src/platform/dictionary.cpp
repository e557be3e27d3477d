#include "platform/dictionary.h"

#include "platform/exceptions.h"
#include "platform/text.h"

namespace platform {

std::size_t Dictionary::FoldedHash::operator()(std::string_view key) const noexcept {
  // FNV-1a over the lower-cased bytes, so keys equal under the plain comparison hash alike.
  std::size_t hash = 14695981039346656037ull;
  for (char c : key) {
    hash ^= static_cast<unsigned char>(LowerAscii(c));
    hash *= 1099511628211ull;
  }
  return hash;
}

bool Dictionary::FoldedEqual::operator()(std::string_view a, std::string_view b) const noexcept {
  return EqualsPlain(a, b);
}

const Variant* Dictionary::Find(std::string_view key) const {
  auto it = index_.find(key);
  return it == index_.end() ? nullptr : &entries_[it->second].second;
}

bool Dictionary::HasKey(std::string_view key) const {
  return Find(key) != nullptr;
}

const Variant& Dictionary::Value(std::string_view key) const {
  const Variant* value = Find(key);
  if (!value) throw KeyNotFoundException("Key not found: " + std::string(key));
  return *value;
}

void Dictionary::SetValue(std::string_view key, Variant value) {
  auto it = index_.find(key);
  if (it != index_.end()) {
    entries_[it->second].second = std::move(value);
    return;
  }
  index_.emplace(std::string(key), entries_.size());
  entries_.emplace_back(std::string(key), std::move(value));
}

Variant Dictionary::Lookup(std::string_view key, const Variant& default_value) const {
  const Variant* value = Find(key);
  return value ? *value : default_value;
}

void Dictionary::Remove(std::string_view key) {
  auto it = index_.find(key);
  if (it == index_.end()) throw KeyNotFoundException("Key not found: " + std::string(key));
  std::size_t position = it->second;
  index_.erase(it);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
  for (auto& slot : index_) {
    if (slot.second > position) --slot.second;
  }
}

}  // namespace platform
