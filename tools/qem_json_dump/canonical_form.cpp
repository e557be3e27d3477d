#include "canonical_form.h"

#include "json/json_quote.h"
#include "platform/dictionary.h"
#include "platform/text.h"

namespace qem_json_dump {

namespace {

void WriteString(std::string& out, std::string_view text) {
  out += JSON::quoted(text);
}

class Writer {
 public:
  explicit Writer(int indent) : indent_(indent) {}

  void Write(const platform::Variant& value, int level) {
    switch (value.type()) {
      case platform::Variant::Type::Nil:
        out_ += "null";
        break;
      case platform::Variant::Type::Boolean:
        out_ += value.BooleanValue() ? "true" : "false";
        break;
      case platform::Variant::Type::Double:
        out_ += platform::Str(value.DoubleValue());
        break;
      case platform::Variant::Type::String:
        WriteString(out_, value.StringValue());
        break;
      case platform::Variant::Type::Dictionary: {
        const auto& entries = value.DictionaryValue()->Entries();
        out_ += '{';
        for (std::size_t i = 0; i < entries.size(); ++i) {
          Separate(i, level + 1);
          WriteString(out_, entries[i].first);
          out_ += ": ";
          Write(entries[i].second, level + 1);
        }
        Close(entries.empty(), level, '}');
        break;
      }
      case platform::Variant::Type::Array: {
        const auto& items = *value.ArrayValue();
        out_ += '[';
        for (std::size_t i = 0; i < items.size(); ++i) {
          Separate(i, level + 1);
          Write(items[i], level + 1);
        }
        Close(items.empty(), level, ']');
        break;
      }
    }
  }

  std::string Take() { return std::move(out_); }

 private:
  void Separate(std::size_t index, int level) {
    if (indent_ == 0) {
      if (index > 0) out_ += ", ";
      return;
    }
    if (index > 0) out_ += ',';
    NewLine(level);
  }

  void Close(bool empty, int level, char bracket) {
    if (indent_ > 0 && !empty) NewLine(level);
    out_ += bracket;
  }

  void NewLine(int level) {
    out_ += '\n';
    out_.append(static_cast<std::size_t>(level) * static_cast<std::size_t>(indent_), ' ');
  }

  int indent_;
  std::string out_;
};

}  // namespace

std::string CanonicalForm(const platform::Variant& value, int indent) {
  Writer writer(indent < 0 ? 0 : indent);
  writer.Write(value, 0);
  return writer.Take();
}

}  // namespace qem_json_dump
