#include "client/command.h"

#include <charconv>
#include <cmath>
#include <memory>

#include "json/json_quote.h"
#include "json/tree_dictionary.h"
#include "platform/dictionary.h"
#include "platform/exceptions.h"
#include "platform/text.h"

namespace qem_client {

command command::create(std::string obj_id, window_keys keys) {
  return {verb::create, std::move(obj_id), std::move(keys)};
}
command command::set(std::string obj_id, window_keys keys) {
  return {verb::set, std::move(obj_id), std::move(keys)};
}
command command::push(std::string obj_id, window_keys keys) {
  return {verb::push, std::move(obj_id), std::move(keys)};
}
command command::remove(std::string obj_id) {
  return {verb::remove, std::move(obj_id), {}};
}

std::optional<std::string> id_refusal(std::string_view id, std::string_view what) {
  for (unsigned char c : id) {
    const char* why = c == '"'                ? "a quotation mark"
                      : c == '\\'             ? "a backslash"
                      : c < 0x20 || c == 0x7F ? "a control character"
                                              : nullptr;
    if (why) {
      return std::string(what) + " " + JSON::quoted(id) + " holds " + why +
             ", which the reply of a press can't carry";
    }
  }
  return std::nullopt;
}

std::optional<std::string> refusal(const command& c) {
  if (c.obj_id.empty()) return std::string("obj_id is empty, and the helper drops such a command");
  if (auto why = id_refusal(c.obj_id, "obj_id")) return why;
  if (c.keys.progress && !std::isfinite(*c.keys.progress)) {
    return std::string("progress is no finite number");
  }
  if (c.keys.buttons) {
    for (const button& b : *c.keys.buttons) {
      if (auto why = id_refusal(b.id, "button id")) return why;
    }
  }
  return std::nullopt;
}

namespace {

// The shortest decimal text that reads back as the same double.
std::string Number(double value) {
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

const char* Word(command::verb what) {
  switch (what) {
    case command::verb::create:
      return "create";
    case command::verb::set:
      return "set";
    case command::verb::push:
      return "push";
    case command::verb::remove:
      return "delete";
  }
  return "";
}

}  // namespace

std::string to_json(const command& c) {
  if (auto why = refusal(c)) throw command_refused(*why);
  std::string out = "{\"obj_id\":" + JSON::quoted(c.obj_id) + ",\"cmd\":\"" + Word(c.what) + "\"";
  if (c.what == command::verb::create) out += ",\"type\":\"wprogress\"";
  if (c.what == command::verb::remove) return out + "}";
  const window_keys& k = c.keys;
  if (k.title) out += ",\"title\":" + JSON::quoted(*k.title);
  if (k.style) out += ",\"style\":" + std::to_string(*k.style);
  if (k.message) out += ",\"message\":" + JSON::quoted(*k.message);
  if (k.progress) out += ",\"progress\":" + Number(*k.progress);
  if (k.buttons) {
    out += ",\"btn_spec\":[";
    for (std::size_t i = 0; i < k.buttons->size(); ++i) {
      const button& b = (*k.buttons)[i];
      if (i > 0) out.push_back(',');
      out += "{\"id\":" + JSON::quoted(b.id) + ",\"text\":" + JSON::quoted(b.text) + "}";
    }
    out.push_back(']');
  }
  return out + "}";
}

std::optional<std::string> json_refusal(const std::string& text) {
  if (text.find('\0') != std::string::npos) {
    return std::string("holds a NUL byte, which would split the message in two");
  }
  if (platform::Trim(text).rfind('{', 0) != 0) return std::string("is no JSON object");
  std::shared_ptr<platform::Dictionary> d;
  try {
    d = JSON::JSONStringToTreeDictionary(text);
  } catch (const platform::Exception& error) {
    return std::string(error.what());
  }
  const platform::Variant obj_id = d->Lookup("obj_id", platform::Variant());
  if (obj_id.type() != platform::Variant::Type::String || obj_id.StringValue().empty()) {
    return std::string("has no obj_id text, and the helper drops such a command");
  }
  if (auto why = id_refusal(obj_id.StringValue(), "obj_id")) return why;
  const platform::Variant buttons = d->Lookup("btn_spec", platform::Variant());
  if (!buttons.IsArray()) return std::nullopt;
  for (const platform::Variant& element : *buttons.ArrayValue()) {
    if (!element.IsDictionary()) continue;
    const platform::Variant id = element.DictionaryValue()->Lookup("id", platform::Variant());
    if (id.type() != platform::Variant::Type::String) continue;
    if (auto why = id_refusal(id.StringValue(), "button id")) return why;
  }
  return std::nullopt;
}

}  // namespace qem_client
