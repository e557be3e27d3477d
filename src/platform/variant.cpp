#include "platform/variant.h"

#include <cmath>
#include <limits>

#include "platform/dictionary.h"
#include "platform/exceptions.h"
#include "platform/text.h"

namespace platform {

Variant::Variant(std::shared_ptr<Dictionary> value) {
  if (value) value_ = std::move(value);
}

Variant::Variant(std::shared_ptr<ObjectArray> value) {
  if (value) value_ = std::move(value);
}

namespace {
[[noreturn]] void Mismatch(const char* wanted) {
  throw TypeMismatchException(std::string("Type mismatch: a container is no ") + wanted);
}
}  // namespace

std::string Variant::StringValue() const {
  switch (type()) {
    case Type::Nil:
      return {};
    case Type::Boolean:
      return std::get<bool>(value_) ? "True" : "False";
    case Type::Double:
      return Str(std::get<double>(value_));
    case Type::String:
      return std::get<std::string>(value_);
    default:
      Mismatch("String");
  }
}

double Variant::DoubleValue() const {
  switch (type()) {
    case Type::Nil:
      return 0;
    case Type::Boolean:
      return std::get<bool>(value_) ? 1 : 0;
    case Type::Double:
      return std::get<double>(value_);
    case Type::String:
      return Val(std::get<std::string>(value_));
    default:
      Mismatch("number");
  }
}

std::int64_t Variant::Int64Value() const {
  double d = std::trunc(DoubleValue());
  if (std::isnan(d)) return 0;
  constexpr double kTop = 9223372036854775808.0;  // 2^63, the first double past the range
  if (d >= kTop) return std::numeric_limits<std::int64_t>::max();
  if (d < -kTop) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(d);
}

bool Variant::BooleanValue() const {
  switch (type()) {
    case Type::Nil:
      return false;
    case Type::Boolean:
      return std::get<bool>(value_);
    case Type::Double:
      return std::get<double>(value_) != 0;
    case Type::String:
      return EqualsPlain(std::get<std::string>(value_), "true");
    default:
      Mismatch("Boolean");
  }
}

std::shared_ptr<Dictionary> Variant::DictionaryValue() const {
  if (IsNil()) return nullptr;
  if (type() != Type::Dictionary) throw TypeMismatchException("Type mismatch: not a Dictionary");
  return std::get<std::shared_ptr<Dictionary>>(value_);
}

std::shared_ptr<ObjectArray> Variant::ArrayValue() const {
  if (IsNil()) return nullptr;
  if (type() != Type::Array) throw TypeMismatchException("Type mismatch: not an array");
  return std::get<std::shared_ptr<ObjectArray>>(value_);
}

}  // namespace platform
