// The keyboard in a progress window: the cancel key presses the leftmost visible button, Tab and
// Shift+Tab go round the visible buttons from left to right, Space presses the one in focus.

#include <gtest/gtest.h>

#include <QApplication>
#include <sstream>

#include "progress_fixture.h"

namespace {

using qem_test::Command;

const char* const kThree =
    R"({"style":3,"message":"Copying","progress":0.5,"btn_spec":[{"id":"a","text":"A"},)"
    R"({"id":"b","text":"B"},{"id":"c","text":"C"}]})";

TEST(Keyboard, CancelKeyTabAndSpaceReachTheVisibleButtonsFromLeftToRight) {
  struct Case {
    const char* name;
    const char* create;
    const char* then;  // a command after the create, or ""
    const char* keys;  // Esc, Tab, Backtab or Space
    // The button in focus when the user turns to the window, then after each key the reply's
    // button id in [], or else the button in focus; "-" for none.
    const char* seen;
  };
  const Case cases[] = {
      {"cancel key: the leftmost of three", kThree, "", "Esc", "C [c]"},
      {"cancel key on a pushed question: its leftmost, and the question goes",
       R"({"style":1,"btn_spec":[{"id":"stop","text":"Stop"}]})",
       R"({"cmd":"push","style":1,"btn_spec":[{"id":"yes","text":"Yes"},{"id":"no","text":"No"}]})",
       "Esc Esc", "No [no] [stop]"},
      {"Tab goes right and round, Shift+Tab back", kThree, "", "Tab Tab Tab Backtab Space",
       "C B A C A [a]"},
      {"hidden slots are passed over", kThree,
       R"({"cmd":"set","btn_spec":[{"id":"a","text":"A"},{"id":"b","text":"B"}]})", "Tab Tab Space",
       "B A B [b]"},
  };
  for (const auto& c : cases) {
    auto replies = std::make_shared<qem_test::RecordingForwarder>();
    auto w = qem_test::MakeWindow(c.create, nullptr, replies);
    if (*c.then) w->cmd(Command(c.then));
    w->Frame()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(w->Frame())) << c.name;
    const auto focused = [&]() -> std::string {
      for (auto* b : w->btns()) {
        if (b->Widget() == QApplication::focusWidget()) return b->Caption();
      }
      return "-";
    };
    std::string seen = focused();
    std::istringstream keys(c.keys);
    for (std::string key; keys >> key;) {
      QWidget* target = QApplication::focusWidget() ? QApplication::focusWidget() : w->Frame();
      const std::size_t before = replies->replies.size();
      if (key == "Esc") QTest::keyClick(target, Qt::Key_Escape);
      if (key == "Tab") QTest::keyClick(target, Qt::Key_Tab);
      if (key == "Backtab") QTest::keyClick(target, Qt::Key_Tab, Qt::ShiftModifier);
      if (key == "Space") QTest::keyClick(target, Qt::Key_Space);
      if (replies->replies.size() == before) seen += " " + focused();
      for (std::size_t i = before; i < replies->replies.size(); ++i) {
        const std::string& reply = replies->replies[i];
        const std::size_t id = reply.find("\"btn_id\":\"") + 10;
        seen += " [" + reply.substr(id, reply.size() - id - 2) + "]";
      }
    }
    EXPECT_EQ(seen, c.seen) << c.name;
  }
}

}  // namespace
