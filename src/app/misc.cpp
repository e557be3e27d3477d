#include "app/misc.h"

#include "platform/dictionary.h"
#include "platform/system.h"
#include "platform/text.h"

namespace misc {

namespace {

// The text of a piece between the `field`-th and the next "=" (fields counted from 1); the
// field past the last one is empty.
std::string_view NthField(std::string_view piece, int field) {
  for (int i = 1; i < field; ++i) {
    std::size_t eq = piece.find('=');
    if (eq == std::string_view::npos) return {};
    piece.remove_prefix(eq + 1);
  }
  return piece.substr(0, piece.find('='));
}

}  // namespace

std::optional<std::string> option_value(std::string_view command_line, std::string_view key) {
  std::string wanted = "--";
  wanted.append(key);
  std::optional<std::string> value;
  std::size_t start = 0;
  for (;;) {
    std::size_t blank = command_line.find(' ', start);
    std::string_view piece = command_line.substr(start, blank - start);
    // No early exit: a later piece with the same name overrides an earlier one.
    if (platform::EqualsPlain(NthField(piece, 1), wanted)) value = std::string(NthField(piece, 2));
    if (blank == std::string_view::npos) break;
    start = blank + 1;
  }
  return value;
}

std::string cmd_line(std::string_view key) {
  static platform::Dictionary cache;
  if (!cache.HasKey(key)) {
    // An absent option is not remembered as absent: each call for it scans again.
    auto value = option_value(platform::System::CommandLine(), key);
    if (value) cache.SetValue(key, std::move(*value));
  }
  return cache.Lookup(key, platform::Variant(std::string())).StringValue();
}

}  // namespace misc
