#include "platform/dictionary.h"

#include "platform/exceptions.h"
#include "platform/text.h"

namespace platform {

namespace {
constexpr std::size_t npos = static_cast<std::size_t>(-1);
}  // namespace

std::size_t Dictionary::FoldedHash(std::string_view key) noexcept {
  // FNV-1a over the lower-cased bytes, so keys equal under the plain comparison hash alike.
  std::size_t hash = 14695981039346656037ull;
  for (char c : key) {
    hash ^= static_cast<unsigned char>(LowerAscii(c));
    hash *= 1099511628211ull;
  }
  return hash;
}

std::size_t Dictionary::Find(std::string_view key) const {
  if (index_.empty()) {
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      if (EqualsPlain(entries_[i].first, key)) return i;
    }
    return npos;
  }
  auto [begin, end] = index_.equal_range(FoldedHash(key));
  for (auto it = begin; it != end; ++it) {
    if (EqualsPlain(entries_[it->second].first, key)) return it->second;
  }
  return npos;
}

void Dictionary::Index(std::size_t position) {
  index_.emplace(FoldedHash(entries_[position].first), position);
}

void Dictionary::Reindex() {
  index_.clear();
  if (entries_.size() <= kScanLimit) return;
  index_.reserve(entries_.size());
  for (std::size_t i = 0; i < entries_.size(); ++i) Index(i);
}

bool Dictionary::HasKey(std::string_view key) const {
  return Find(key) != npos;
}

const Variant& Dictionary::Value(std::string_view key) const {
  std::size_t position = Find(key);
  if (position == npos) throw KeyNotFoundException("Key not found: " + std::string(key));
  return entries_[position].second;
}

void Dictionary::SetValue(std::string_view key, Variant value) {
  std::size_t position = Find(key);
  if (position != npos) {
    entries_[position].second = std::move(value);
    return;
  }
  // Most dictionaries hold a few keys: room for four at once spares the first regrowths.
  if (entries_.empty()) entries_.reserve(4);
  entries_.emplace_back(std::string(key), std::move(value));
  if (entries_.size() == kScanLimit + 1) {
    Reindex();
  } else if (entries_.size() > kScanLimit) {
    Index(entries_.size() - 1);
  }
}

Variant Dictionary::Lookup(std::string_view key, const Variant& default_value) const {
  std::size_t position = Find(key);
  return position == npos ? default_value : entries_[position].second;
}

void Dictionary::Remove(std::string_view key) {
  std::size_t position = Find(key);
  if (position == npos) throw KeyNotFoundException("Key not found: " + std::string(key));
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(position));
  Reindex();
}

}  // namespace platform
