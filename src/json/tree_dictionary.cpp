#include "json/tree_dictionary.h"

#include <utility>

#include "json/json_extract.h"
#include "json/token_scan.h"
#include "platform/text.h"

namespace {

constexpr std::string_view kObject = "}";
constexpr std::string_view kArray = "]";

// Gives a container's value from its children, each passed to `add` with its raw name and its
// value. The Dictionary or array is made on the first child: a container with none is read as a
// scalar (see below), which is why it cannot be made up front.
class ChildCollector {
 public:
  explicit ChildCollector(std::string_view close) : close_(close) {}

  void add(std::string_view name, platform::Variant value) {
    if (close_ == kObject) {
      if (!dictionary_) dictionary_ = platform::NewDictionary();
      std::string storage;
      dictionary_->SetValue(JSON::scan::KeyView(name, storage), std::move(value));
    } else if (close_ == kArray) {
      if (!array_) array_ = platform::NewArray();
      array_->push_back(std::move(value));
    }
  }

  // Whether a container was made: there was a child and the closer was "}" or "]".
  bool has_value() const { return dictionary_ || array_; }
  platform::Variant take() {
    if (dictionary_) return std::move(dictionary_);
    return std::move(array_);
  }

 private:
  std::string_view close_;
  std::shared_ptr<platform::Dictionary> dictionary_;
  std::shared_ptr<platform::ObjectArray> array_;
};

// The value of a scalar node: an array of one element when its closer was "]".
platform::Variant Wrap(platform::Variant value, std::string_view close) {
  if (close != kArray) return value;
  auto array = platform::NewArray();
  array->push_back(std::move(value));
  return array;
}

// Reads a range the way a JSONExtract over it followed by as_variant would, but makes each value
// at once instead of keeping a node for it.
class DirectReader {
 public:
  DirectReader(const JSON::TokenArray& tokens, const std::vector<std::int32_t>& closer)
      : tokens_(tokens), closer_(closer) {}

  platform::Variant value(std::int32_t start, std::int32_t end, std::string_view name,
                          std::string_view close, int depth) {
    if (end == start - 1) {
      if (close == kArray) return platform::NewArray();
      if (close == kObject) return platform::NewDictionary();
    }
    ChildCollector children(close);
    JSON::scan::ScanRange(
        tokens_, closer_, start, end, name,
        [&](std::int32_t first, std::int32_t last, std::string_view child_name,
            std::string_view child_close) {
          JSON::scan::CheckDepth(depth + 1);
          children.add(child_name, value(first, last, child_name, child_close, depth + 1));
        },
        [&](std::int32_t index, std::string_view child_name) {
          children.add(child_name, JSON::scan::TokenValue(tokens_[index]));
        });
    if (children.has_value()) return children.take();
    std::string text = end < start ? std::string() : JSON::scan::JoinUnescaped(tokens_, start, end);
    return Wrap(JSON::scan::ScalarValue(std::move(text)), close);
  }

 private:
  const JSON::TokenArray& tokens_;
  const std::vector<std::int32_t>& closer_;
};

}  // namespace

platform::Variant JSONExtract::as_variant() {
  if (end_token == start_token - 1) {
    if (close_bracket_type == kArray) return platform::NewArray();
    if (close_bracket_type == kObject) return platform::NewDictionary();
  }
  ChildCollector collected(close_bracket_type);
  for (const auto& child : children) collected.add(child->pname, child->as_variant());
  if (collected.has_value()) return collected.take();
  return Wrap(JSON::scan::ScalarValue(as_string()), close_bracket_type);
}

namespace JSON {

std::shared_ptr<platform::Dictionary> JSONStringToTreeDictionary(const std::string& json) {
  // The tokens live only inside this call, so a text with nothing to trim is split in place:
  // the pointer shares no ownership, and no copy is made.
  const std::string_view trimmed = platform::TrimView(json);
  const TokenArray tokens =
      JSON_Split(trimmed.size() == json.size() ? std::shared_ptr<const std::string>(
                                                     std::shared_ptr<const std::string>(), &json)
                                               : std::make_shared<const std::string>(trimmed));
  // Fewer than three tokens leave the tree empty, and an empty tree reads as a number.
  if (tokens.size() < 3) return platform::NewDictionary();
  const std::vector<std::int32_t> closer = scan::MatchClosers(tokens);
  platform::Variant value =
      DirectReader(tokens, closer).value(1, tokens.size() - 2, {}, kObject, 1);
  if (value.IsDictionary()) return value.DictionaryValue();
  return platform::NewDictionary();
}

}  // namespace JSON
