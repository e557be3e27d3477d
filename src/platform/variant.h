#pragma once
// Variant: the dynamically typed value that dictionaries and the JSON reader hand around.
// It holds nil, a Boolean, a Double, a String, a Dictionary or an array of such values;
// containers are held by shared pointer, so copying a Variant shares the container.

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace platform {

class Dictionary;
class Variant;
using ObjectArray = std::vector<Variant>;

class Variant {
 public:
  enum class Type { Nil, Boolean, Double, String, Dictionary, Array };

  Variant() = default;
  Variant(std::nullptr_t) {}
  Variant(bool value) : value_(value) {}
  Variant(double value) : value_(value) {}
  Variant(int value) : value_(static_cast<double>(value)) {}
  Variant(std::string value) : value_(std::move(value)) {}
  Variant(const char* value) : value_(std::string(value)) {}
  Variant(std::shared_ptr<Dictionary> value);
  Variant(std::shared_ptr<ObjectArray> value);

  Type type() const noexcept { return static_cast<Type>(value_.index()); }
  bool IsNil() const noexcept { return type() == Type::Nil; }
  bool IsDictionary() const noexcept { return type() == Type::Dictionary; }
  bool IsArray() const noexcept { return type() == Type::Array; }

  // Scalar conversions. String: as is; Double: shortest text that reads back; Boolean:
  // "True"/"False"; nil: "". A container throws TypeMismatchException.
  std::string StringValue() const;
  // Double: as is; String: Val; Boolean: 1 or 0; nil: 0. A container throws.
  double DoubleValue() const;
  // DoubleValue truncated toward zero and clamped to the 64-bit range (NaN gives 0).
  std::int64_t Int64Value() const;
  // Boolean: as is; Double: not 0; String: equal to "true" by the plain comparison; nil: false.
  bool BooleanValue() const;

  // The container inside; a nil Variant gives an empty pointer, any other type throws
  // TypeMismatchException.
  std::shared_ptr<Dictionary> DictionaryValue() const;
  std::shared_ptr<ObjectArray> ArrayValue() const;

  // Equal types and equal values; containers compare by identity.
  bool operator==(const Variant& other) const = default;

 private:
  std::variant<std::monostate, bool, double, std::string, std::shared_ptr<Dictionary>,
               std::shared_ptr<ObjectArray>>
      value_;
};

// A new empty array for a Variant.
inline std::shared_ptr<ObjectArray> NewArray() {
  return std::make_shared<ObjectArray>();
}

}  // namespace platform
