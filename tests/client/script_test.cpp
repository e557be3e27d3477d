// qem_ctl's language, line by line: the short form gives the same JSON as the library's builder,
// raw JSON goes as it is, pauses and waits are read, and a bad line says why.

#include "qem_ctl/script.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using qem_ctl::parse_line;
using qem_ctl::step;

TEST(Script, CommandsInShortFormAndInJson) {
  const struct {
    const char* line;
    const char* json;
  } cases[] = {
      {"create p1 style=3 title=Copying",
       R"({"obj_id":"p1","cmd":"create","type":"wprogress","title":"Copying","style":3})"},
      {"  set p1 progress=0.5\r", R"({"obj_id":"p1","cmd":"set","progress":0.5})"},
      {"set p1 progress=busy style=message+bar",
       R"({"obj_id":"p1","cmd":"set","style":3,"progress":-1})"},
      {R"(push p1 style=1 title="Replace?" buttons=yes:Yes,no:No button="later:In a bit, maybe")",
       R"({"obj_id":"p1","cmd":"push","title":"Replace?","style":1,"btn_spec":[{"id":"yes",)"
       R"("text":"Yes"},{"id":"no","text":"No"},{"id":"later","text":"In a bit, maybe"}]})"},
      {"set p1 buttons= title=", R"({"obj_id":"p1","cmd":"set","title":"","btn_spec":[]})"},
      {"set p1 buttons=OK", R"({"obj_id":"p1","cmd":"set","btn_spec":[{"id":"OK","text":"OK"}]})"},
      {R"(set "my window" message="a \"b\" \\ c\nd" title=x=y)",
       R"({"obj_id":"my window","cmd":"set","title":"x=y","message":"a \"b\" \\ c\nd"})"},
      {"delete p1", R"({"obj_id":"p1","cmd":"delete"})"},
      {R"(  {"obj_id":"p2","cmd":"create","type":"wprogress","extra":[1]}  )",
       R"({"obj_id":"p2","cmd":"create","type":"wprogress","extra":[1]})"},
  };
  for (const auto& row : cases) {
    step s = parse_line(row.line);
    EXPECT_EQ(s.what, step::kind::send) << row.line;
    EXPECT_EQ(s.json, row.json) << row.line;
  }
}

TEST(Script, PausesWaitsAndLinesWithoutAStep) {
  const struct {
    const char* line;
    step::kind what;
    std::optional<double> seconds;  // nullopt: no limit
    const char* obj_id;             // nullptr: any window
  } cases[] = {
      {"", step::kind::nothing, {}, nullptr},
      {"   # a comment", step::kind::nothing, {}, nullptr},
      {"sleep +2e-1", step::kind::sleep, 0.2, nullptr},
      {"wait", step::kind::wait, {}, nullptr},
      {"wait p1 timeout=2.5", step::kind::wait, 2.5, "p1"},
  };
  for (const auto& row : cases) {
    step s = parse_line(row.line);
    EXPECT_EQ(s.what, row.what) << row.line;
    EXPECT_EQ(s.limit ? std::optional(s.limit->count()) : std::nullopt, row.seconds) << row.line;
    EXPECT_EQ(s.obj_id.value_or("(any)"), row.obj_id ? row.obj_id : "(any)") << row.line;
  }
}

TEST(Script, ABadLineSaysWhy) {
  const struct {
    const char* line;
    const char* reason;
  } cases[] = {
      {"frobnicate p1", "unknown command \"frobnicate\""},
      {"create", "needs a window ID"},
      {"set p1 colour=red", "unknown key \"colour\""},
      {"set p1 progress=nan", "progress needs a number"},
      {"set p1 progress=0x1p3", "progress needs a number"},
      {"set p1 style=bold", "style needs a number or flags"},
      {"set p1 stray", "\"stray\" is no KEY=VALUE"},
      {"set p1 title=\"open", "not closed"},
      {R"(set p1 title="a\qb")", "unknown escape"},
      {"delete p1 title=x", "delete takes no keys"},
      {R"(set p1 buttons=ok:OK,a\b:B)", "backslash"},
      {"sleep", "sleep takes one number"},
      {"sleep -1", "negative"},
      {"wait p1 p2", "wait takes an ID"},
      {"wait p1 timeout=soon", "timeout needs a number"},
      {R"({"cmd":"create"})", "no obj_id"},
  };
  for (const auto& row : cases) {
    try {
      parse_line(row.line);
      ADD_FAILURE() << "accepted: " << row.line;
    } catch (const qem_ctl::bad_line& error) {
      EXPECT_NE(std::string(error.what()).find(row.reason), std::string::npos)
          << row.line << ": " << error.what();
    }
  }
}

}  // namespace
