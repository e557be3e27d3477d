#include "client/event.h"

#include "client/command.h"
#include "json/json_quote.h"
#include "json/tree_dictionary.h"
#include "platform/dictionary.h"
#include "platform/exceptions.h"

namespace qem_client {

namespace {

std::string Text(const platform::Dictionary& d, const char* key) {
  const platform::Variant value = d.Lookup(key, platform::Variant(""));
  if (value.IsDictionary() || value.IsArray()) return "";
  return value.StringValue();
}

}  // namespace

std::optional<event> event::from_reply(const std::string& text) {
  if (text.empty()) return std::nullopt;
  event e;
  e.text = text;
  try {
    auto d = JSON::JSONStringToTreeDictionary(text);
    e.obj_id = Text(*d, "obj_id");
    e.cmd = Text(*d, "cmd");
    e.btn_id = Text(*d, "btn_id");
  } catch (const platform::Exception&) {
    // Nested too deeply: no fields, the text is kept.
  }
  return e;
}

event event::ended(int exit_status) {
  event e;
  e.what = kind::helper_ended;
  e.exit_status = exit_status;
  return e;
}

std::string to_json(const event& e) {
  if (e.what == event::kind::helper_ended) {
    return "{\"cmd\":\"helper_ended\",\"status\":" + std::to_string(e.exit_status) + "}";
  }
  return "{\"obj_id\":" + JSON::quoted(e.obj_id) + ",\"cmd\":" + JSON::quoted(e.cmd) +
         ",\"btn_id\":" + JSON::quoted(e.btn_id) + "}";
}

}  // namespace qem_client
