#pragma once
// Dictionary: String keys compared by the plain comparison (ASCII case ignored), values of any
// Variant, iteration in the order keys were first set.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/variant.h"

namespace platform {

class Dictionary {
 public:
  using Entry = std::pair<std::string, Variant>;

  bool HasKey(std::string_view key) const;
  // The value under key; throws KeyNotFoundException naming the key when it is absent.
  const Variant& Value(std::string_view key) const;
  // Sets or replaces the value. A replaced entry keeps its place and its first-written key.
  void SetValue(std::string_view key, Variant value);
  // The value under key, or the default when it is absent.
  Variant Lookup(std::string_view key, const Variant& default_value) const;
  // Removes the entry; throws KeyNotFoundException when it is absent.
  void Remove(std::string_view key);
  std::size_t KeyCount() const noexcept { return entries_.size(); }
  const std::vector<Entry>& Entries() const noexcept { return entries_; }

 private:
  // Up to this many entries a lookup is a plain scan; past it a hash index is kept as well.
  static constexpr std::size_t kScanLimit = 8;
  static std::size_t FoldedHash(std::string_view key) noexcept;
  // The position of the entry under key, or npos.
  std::size_t Find(std::string_view key) const;
  void Index(std::size_t position);
  void Reindex();

  std::vector<Entry> entries_;
  // Folded hash of a key to the position of its entry; empty while the dictionary is small.
  std::unordered_multimap<std::size_t, std::size_t> index_;
};

inline std::shared_ptr<Dictionary> NewDictionary() {
  return std::make_shared<Dictionary>();
}

}  // namespace platform
