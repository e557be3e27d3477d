// Commands as the helper reads them: the exact JSON of each kind with every string escaped, and
// what the helper or the reply of a press could not carry refused before anything is sent;
// replies read back; the names of a session.

#include "client/command.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <variant>
#include <vector>

#include "client/event.h"
#include "client/session_names.h"
#include "json/tree_dictionary.h"
#include "platform/dictionary.h"

namespace {

using namespace std::string_literals;
using qem_client::command;
using Buttons = std::vector<qem_client::button>;

TEST(Command, EachKindHasItsExactText) {
  EXPECT_EQ(qem_client::to_json(command::create("p1", {.title = "Copying",
                                                       .style = 3,
                                                       .message = "Step 1",
                                                       .progress = 0.25,
                                                       .buttons = Buttons{{"stop", "Stop"}}})),
            R"({"obj_id":"p1","cmd":"create","type":"wprogress","title":"Copying","style":3,)"
            R"("message":"Step 1","progress":0.25,"btn_spec":[{"id":"stop","text":"Stop"}]})");
  // Escaped as the helper's reader takes them back: a raw NUL would split the record, a raw
  // control character is no JSON. A number is the shortest text that reads back as it.
  EXPECT_EQ(
      qem_client::to_json(command::set(
          "p", {.title = "\"q\" \\ /\n\x01\x7f\0"s, .message = "grüße ✓", .progress = 1.0 / 3})),
      R"({"obj_id":"p","cmd":"set","title":"\"q\" \\ /\n\u0001\u007f\u0000","message":"grüße ✓",)"
      R"("progress":0.3333333333333333})");
}

// Built commands and JSON written by hand alike: an id that the reply of a press can't carry,
// and what the helper drops or can't read, are refused with the reason; a built command that is
// refused never becomes text.
TEST(Command, WhatAReplyOrTheHelperCannotCarryIsRefusedBeforeAnyTextIsMade) {
  const struct {
    const char* name;
    std::variant<command, std::string> c;  // built, or written by hand
    const char* reason;                    // nullptr: accepted
  } cases[] = {
      {"quote in obj_id", command::create("a\"b", {}), "quotation mark"},
      {"line break in obj_id", command::remove("a\nb"), "control character"},
      {"empty obj_id", command::set("", {}), "empty"},
      {"backslash in a button id",
       command::push("p", {.buttons = Buttons{{"ok", "OK"}, {"x\\", "X"}}}), "backslash"},
      {"progress no number",
       command::set("p", {.progress = std::numeric_limits<double>::quiet_NaN()}), "finite"},
      {"captions hold anything", command::set("p", {.buttons = Buttons{{"ok", "\"Q\" \\"}}}),
       nullptr},
      {"written: unknown keys pass", R"( {"obj_id":"p1","cmd":"frob","x":[1,{"y":2}]})", nullptr},
      {"written: no object", R"(["obj_id","p1"])", "no JSON object"},
      {"written: no obj_id", R"({"cmd":"create","type":"wprogress"})", "no obj_id"},
      {"written: escaped backslash in a button id",
       R"({"obj_id":"p","cmd":"set","btn_spec":[{"id":"ok"},{"id":"a\\b"}]})", "backslash"},
      {"written: a raw NUL", R"({"obj_id":"p",)"s + '\0' + R"("cmd":"set"})", "NUL"},
  };
  for (const auto& row : cases) {
    const command* built = std::get_if<command>(&row.c);
    const auto why = built ? qem_client::refusal(*built)
                           : qem_client::json_refusal(std::get<std::string>(row.c));
    if (!row.reason) {
      EXPECT_FALSE(why) << row.name << ": " << why.value_or("");
      continue;
    }
    ASSERT_TRUE(why) << row.name;
    EXPECT_NE(why->find(row.reason), std::string::npos) << row.name << ": " << *why;
    if (built) {
      EXPECT_THROW(qem_client::to_json(*built), qem_client::command_refused) << row.name;
    }
  }
}

// Read into its fields by the session's tests; here what is written back.
TEST(Event, AReplyIsWrittenBackAsOneLineOfJson) {
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

// Names that leave their folder are refused where a name becomes a path; one row shows that
// check is asked here too. Names made up for a session pass and differ.
TEST(SessionNames, GivenNamesAreRefusedWhereTheHelperWouldCutOrRefuseThem) {
  using qem_client::session_names;
  const auto a = session_names::unique(), b = session_names::unique();
  EXPECT_FALSE(qem_client::refusal(a)) << *qem_client::refusal(a);
  EXPECT_NE(a.channel, b.channel);
  const struct {
    const char* name;
    session_names names;
    const char* reason;
  } cases[] = {
      {"slash", session_names::from_base("a/b"), "\"/\""},
      {"blank", session_names::from_base("a b"), "blank"},
      {"equals sign", session_names::from_base("a=b"), "blank or an \"=\""},
      {"one lock for both", {"same", "same", "cmd", "rep"}, "equal"},
  };
  for (const auto& row : cases) {
    auto why = qem_client::refusal(row.names);
    ASSERT_TRUE(why) << row.name;
    EXPECT_NE(why->find(row.reason), std::string::npos) << row.name << ": " << *why;
  }
}

}  // namespace
