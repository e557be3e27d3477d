// Commands as the helper reads them: the exact JSON of each kind, strings escaped so that the
// helper's reader gives them back unchanged, and the ids a reply could not carry refused.

#include "client/command.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "client/event.h"
#include "client/session_names.h"
#include "json/tree_dictionary.h"
#include "platform/dictionary.h"

namespace {

using qem_client::button;
using qem_client::command;
using qem_client::window_keys;

struct JsonCase {
  const char* name;
  command c;
  std::string json;
};

TEST(Command, EachKindHasItsExactText) {
  const JsonCase cases[] = {
      {"create with every key",
       command::create("p1", {.title = "Copying",
                              .style = 3,
                              .message = "Step 1",
                              .progress = 0.25,
                              .buttons = std::vector<button>{{"stop", "Stop"}}}),
       R"({"obj_id":"p1","cmd":"create","type":"wprogress","title":"Copying","style":3,)"
       R"("message":"Step 1","progress":0.25,"btn_spec":[{"id":"stop","text":"Stop"}]})"},
      {"set of one key", command::set("p1", {.progress = 0.5}),
       R"({"obj_id":"p1","cmd":"set","progress":0.5})"},
      {"busy bar", command::set("p1", {.progress = -1}),
       R"({"obj_id":"p1","cmd":"set","progress":-1})"},
      {"push of two buttons",
       command::push("p1", {.style = 1, .buttons = std::vector<button>{{"y", "Yes"}, {"n", "No"}}}),
       R"({"obj_id":"p1","cmd":"push","style":1,)"
       R"("btn_spec":[{"id":"y","text":"Yes"},{"id":"n","text":"No"}]})"},
      {"no buttons at all", command::set("p1", {.buttons = std::vector<button>{}}),
       R"({"obj_id":"p1","cmd":"set","btn_spec":[]})"},
      {"delete", command::remove("p1"), R"({"obj_id":"p1","cmd":"delete"})"},
  };
  for (const auto& row : cases) EXPECT_EQ(qem_client::to_json(row.c), row.json) << row.name;
}

TEST(Command, EveryTextComesBackFromTheHelpersReaderUnchanged) {
  const std::string texts[] = {
      "plain",
      "say \"hi\"",
      "back\\slash",
      "line\nbreak\ttab\r",
      std::string("nul\0in", 6),
      "\x01\x1f\x7f",
      "grüße, 東京 ✓",
      "slash / and }{][,:",
  };
  for (const auto& text : texts) {
    const std::string json =
        qem_client::to_json(command::set("p1", {.title = text, .message = text}));
    EXPECT_EQ(json.find('\0'), std::string::npos) << "a NUL would split the record";
    auto d = JSON::JSONStringToTreeDictionary(json);
    EXPECT_EQ(d->Lookup("title", "").StringValue(), text) << json;
    EXPECT_EQ(d->Lookup("message", "").StringValue(), text) << json;
  }
  for (double p : {0.1, 1.0 / 3, 1e-9, 0.0, -0.5}) {
    const std::string json = qem_client::to_json(command::set("p", {.progress = p}));
    EXPECT_EQ(JSON::JSONStringToTreeDictionary(json)->Lookup("progress", "").DoubleValue(), p);
  }
}

TEST(Command, IdsAReplyCannotCarryAreRefusedBeforeAnyTextIsMade) {
  const struct {
    const char* name;
    command c;
    const char* reason;
  } cases[] = {
      {"quote in obj_id", command::create("a\"b", {}), "quotation mark"},
      {"backslash in obj_id", command::set("a\\b", {}), "backslash"},
      {"line break in obj_id", command::remove("a\nb"), "control character"},
      {"empty obj_id", command::set("", {}), "empty"},
      {"quote in a button id",
       command::push("p", {.buttons = std::vector<button>{{"ok", "OK"}, {"x\"", "X"}}}),
       "quotation mark"},
      {"backslash in a button id", command::set("p", {.buttons = std::vector<button>{{"\\", "B"}}}),
       "backslash"},
      {"progress no number",
       command::set("p", {.progress = std::numeric_limits<double>::quiet_NaN()}), "finite"},
  };
  for (const auto& row : cases) {
    auto why = qem_client::refusal(row.c);
    ASSERT_TRUE(why) << row.name;
    EXPECT_NE(why->find(row.reason), std::string::npos) << row.name << ": " << *why;
    EXPECT_THROW(qem_client::to_json(row.c), qem_client::command_refused) << row.name;
  }
  // Captions may hold anything: only ids come back in a reply.
  EXPECT_FALSE(qem_client::refusal(
      command::set("p", {.buttons = std::vector<button>{{"ok", "\"Quoted\" \\ caption"}}})));
}

TEST(Command, JsonWrittenByHandIsCheckedLikeABuiltCommand) {
  const struct {
    const char* name;
    std::string text;
    const char* reason;  // nullptr: accepted
  } cases[] = {
      {"good", R"({"obj_id":"p1","cmd":"set","progress":0.5})", nullptr},
      {"unknown keys pass", R"( {"obj_id":"p1","cmd":"frob","x":[1,{"y":2}]})", nullptr},
      {"no object", R"(["obj_id","p1"])", "no JSON object"},
      {"no obj_id", R"({"cmd":"create","type":"wprogress"})", "no obj_id"},
      {"obj_id a number", R"({"obj_id":5,"cmd":"set"})", "no obj_id"},
      {"escaped quote in obj_id", R"({"obj_id":"a\"b","cmd":"set"})", "quotation mark"},
      {"escaped backslash in a button id",
       R"({"obj_id":"p","cmd":"set","btn_spec":[{"id":"ok"},{"id":"a\\b"}]})", "backslash"},
      {"escaped control character", R"({"obj_id":"a\u0001","cmd":"set"})", "control character"},
      {"a raw NUL", std::string(R"({"obj_id":"p",)") + '\0' + R"("cmd":"set"})", "NUL"},
      {"nested too deeply",
       "{\"obj_id\":\"p\",\"a\":" + std::string(600, '[') + std::string(600, ']') + "}", "deeply"},
  };
  for (const auto& row : cases) {
    auto why = qem_client::json_refusal(row.text);
    if (!row.reason) {
      EXPECT_FALSE(why) << row.name << ": " << why.value_or("");
      continue;
    }
    ASSERT_TRUE(why) << row.name;
    EXPECT_NE(why->find(row.reason), std::string::npos) << row.name << ": " << *why;
  }
}

TEST(Event, AReplyIsReadIntoItsFieldsAndWrittenBackAsOneLineOfJson) {
  auto e = qem_client::event::from_reply(R"({"obj_id":"p1","cmd":"pressed","btn_id":"stop"})");
  ASSERT_TRUE(e);
  EXPECT_TRUE(e->pressed());
  EXPECT_EQ(e->obj_id, "p1");
  EXPECT_EQ(e->btn_id, "stop");
  EXPECT_EQ(qem_client::to_json(*e), e->text);
  // A broken reply (another sender's raw quotation mark) still gives one line of valid JSON.
  auto broken = qem_client::event::from_reply("{\"obj_id\":\"a\nb\",\"cmd\":\"pressed\"}");
  ASSERT_TRUE(broken);
  const std::string line = qem_client::to_json(*broken);
  EXPECT_EQ(line.find('\n'), std::string::npos) << line;
  EXPECT_EQ(JSON::JSONStringToTreeDictionary(line)->Lookup("obj_id", "").StringValue(), "a\nb");
  EXPECT_FALSE(qem_client::event::from_reply(""));
  EXPECT_EQ(qem_client::to_json(qem_client::event::ended(137)),
            R"({"cmd":"helper_ended","status":137})");
}

TEST(SessionNames, UniqueNamesDifferAndPassTheHelpersChecks) {
  auto a = qem_client::session_names::unique();
  auto b = qem_client::session_names::unique();
  EXPECT_FALSE(qem_client::refusal(a)) << *qem_client::refusal(a);
  EXPECT_NE(a.stay_alive_key, b.stay_alive_key);
  EXPECT_NE(a.channel, b.channel);
  for (const auto& name : {a.stay_alive_key, a.launch_key, a.channel, a.reply_channel}) {
    EXPECT_EQ(name.find_first_of("/ ="), std::string::npos) << name;
  }
}

TEST(SessionNames, GivenNamesAreRefusedWhereTheHelperWouldCutOrRefuseThem) {
  using qem_client::session_names;
  const struct {
    const char* name;
    session_names names;
    const char* reason;
  } cases[] = {
      {"slash", session_names::from_base("a/b"), "\"/\""},
      {"dot dot as a whole", {"..", "up", "cmd", "rep"}, "\"..\""},
      {"blank", session_names::from_base("a b"), "blank"},
      {"equals sign", session_names::from_base("a=b"), "blank or an \"=\""},
      {"empty", {"alive", "", "cmd", "rep"}, "empty"},
      {"too long for a channel", session_names::from_base(std::string(240, 'x')), "too long"},
      {"one lock for both", {"same", "same", "cmd", "rep"}, "equal"},
      {"one channel for both", {"alive", "up", "ch", "ch"}, "equal"},
  };
  for (const auto& row : cases) {
    auto why = qem_client::refusal(row.names);
    ASSERT_TRUE(why) << row.name;
    EXPECT_NE(why->find(row.reason), std::string::npos) << row.name << ": " << *why;
  }
}

}  // namespace
