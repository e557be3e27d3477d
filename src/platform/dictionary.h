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
  struct FoldedHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const noexcept;
  };
  struct FoldedEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept;
  };
  const Variant* Find(std::string_view key) const;

  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t, FoldedHash, FoldedEqual> index_;
};

inline std::shared_ptr<Dictionary> NewDictionary() {
  return std::make_shared<Dictionary>();
}

}  // namespace platform
