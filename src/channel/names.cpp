#include "channel/names.h"

namespace names {

std::optional<std::string> refusal(std::string_view name, std::size_t overhead) {
  if (name.find('/') != std::string_view::npos) return "holds a \"/\"";
  if (name.find('\0') != std::string_view::npos) return "holds a NUL byte";
  if (name == "." || name == "..") return "is \"" + std::string(name) + "\"";
  if (name.size() + overhead > kMaxFileName) {
    return "is too long (" + std::to_string(name.size()) + " bytes; at most " +
           std::to_string(kMaxFileName - overhead) + ")";
  }
  return std::nullopt;
}

std::string quoted(std::string_view name) {
  std::string shown = "\"";
  for (char c : name) shown.push_back(static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c);
  return shown + "\"";
}

}  // namespace names
