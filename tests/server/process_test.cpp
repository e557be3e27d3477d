// The dispatch of one message: every outcome of obj_id, cmd and type against the object table,
// read back from the windows the server made.

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "server_fixture.h"

namespace {

using qem_test::Create;
using qem_test::Set;

std::string Delete(const std::string& id) {
  return R"({"obj_id":")" + id + R"(","cmd":"delete"})";
}

class Dispatch : public qem_test::ServerTest {
 protected:
  // obj_id to the title of the window entered under it.
  std::map<std::string, std::string> Entries() const {
    std::map<std::string, std::string> entries;
    for (const auto& [id, object] : server->objects()) entries[id] = TitleOf(id);
    return entries;
  }
  // The titles of all windows on the screen, entered or not, sorted.
  static std::vector<std::string> OpenWindows() {
    std::vector<std::string> titles;
    for (QWidget* w : QApplication::topLevelWidgets()) {
      if (w->isVisible()) titles.push_back(w->windowTitle().toStdString());
    }
    std::sort(titles.begin(), titles.end());
    return titles;
  }
};

TEST_F(Dispatch, EveryOutcomeOfTheEnvelope) {
  const struct {
    const char* name;
    std::vector<std::string> messages;
    std::map<std::string, std::string> entries;
    std::vector<std::string> open;
    const char* said = "";  // in the one line on stderr; "" for no line
  } rows[] = {
      {"words and ids ignore letter case",
       {R"({"obj_id":"p1","cmd":"CREATE","type":"WProgress","style":1,"title":"A"})",
        Set("P1", "B")},
       {{"p1", "B"}},
       {"B"}},
      {"no obj_id, an empty one, another type or none: nothing is made",
       {R"({"cmd":"create","type":"wprogress"})",
        R"({"obj_id":"","cmd":"create","type":"wprogress"})",
        R"({"obj_id":"a","cmd":"create","type":"other"})", R"({"obj_id":"a","cmd":"create"})",
        Set("a", "B")},
       {},
       {}},
      {"delete closes and removes; again, nothing",
       {Create("p1", "A"), Create("p2", "B"), Delete("p1"), Delete("p1"), Set("p1", "C")},
       {{"p2", "B"}},
       {"B"}},
      {"another type over an entry, garbage, no object, deep nesting, 1 MB, unknown ids and "
       "commands change nothing",
       {Create("p1", "A"), R"({"obj_id":"p1","cmd":"create","type":"other","title":"B"})",
        "not json", R"([{"obj_id":"p1","cmd":"delete"}])", R"({"a":)" + std::string(100000, '['),
        Set("p9", std::string(1 << 20, 'x')), Delete("p9"),
        R"({"obj_id":"p1","cmd":"frobnicate","title":"B"})", R"({"obj_id":"p1","title":"B"})"},
       {{"p1", "A"}},
       {"A"}},
      {"create twice: the second is addressed and deleted, the first stays open",
       {Create("p1", "A"), Create("p1", "B"), Set("p1", "C"), Delete("p1"), Set("p1", "D")},
       {},
       {"A"}},
      {"an obj_id holding a NUL, which no reply can carry: refused, said once",
       {R"({"obj_id":"p\u00001","cmd":"create","type":"wprogress"})"},
       {},
       {},
       R"(create of "p\u00001" refused)"},
  };
  for (const auto& row : rows) {
    Start();
    testing::internal::CaptureStderr();
    for (const auto& message : row.messages) server->process(message);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(Entries(), row.entries) << row.name;
    EXPECT_EQ(OpenWindows(), row.open) << row.name;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), *row.said ? 1 : 0) << row.name << said;
    EXPECT_NE(said.find(row.said), std::string::npos) << row.name << said;
    server.reset();
  }
}

}  // namespace
