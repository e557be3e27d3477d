// Commands and the stack of states: what "set", "push" and "delete" change, what a press answers,
// and that a key or a button entry which can't be read breaks nothing.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QtTest/QTest>
#include <algorithm>

#include "platform/text.h"
#include "progress_fixture.h"

namespace {

using qem_test::Command;
using qem_test::LookOf;

class Commands : public ::testing::Test {
 protected:
  std::unique_ptr<wProgress> Make(const std::string& json) {
    return qem_test::MakeWindow(json, std::make_shared<qem_test::TableMeasurer>(), replies_);
  }
  std::shared_ptr<qem_test::RecordingForwarder> replies_ =
      std::make_shared<qem_test::RecordingForwarder>();
};

// A press answers with its entry's id and pops one pushed state, showing the one below as it was.
// Only a button a user can see answers; a reply that can't be written is reported and keeps the
// pushed state; "delete" then only closes the window.
TEST_F(Commands, APressOfAVisibleButtonRepliesAndPopsOnePushShowingTheStateBelowAsItWas) {
  auto w = Make(R"({"style":3,"title":"Backup","message":"Copying","progress":0.3,)"
                R"("btn_spec":[{"text":"No id"}]})");
  // A user's click; an accessibility client's, which reaches hidden buttons too.
  const auto press = [&](int i) { QTest::mouseClick(w->btn(i).Widget(), Qt::LeftButton); };
  const auto click = [&](int i) { static_cast<QAbstractButton*>(w->btn(i).Widget())->click(); };
  const std::string base = LookOf(*w);
  w->cmd(Command(R"({"cmd":"push","style":1,"message":"Skip?","btn_spec":[{"id":"skip"}]})"));
  const std::string middle = LookOf(*w);
  w->cmd(Command(R"({"cmd":"Push","style":1,"message":"Replace?",)"
                 R"("btn_spec":[{"id":"yes","text":"Yes"},{"id":"no","text":"No"}]})"));
  w->cmd(Command(R"({"cmd":"set","progress":0.9})"));  // lands on the top state
  // Nothing is inherited from below: no title, no bar, its own buttons.
  EXPECT_EQ(LookOf(*w), "|Replace?|0|900.000000|97|Yes|No");
  press(1);
  EXPECT_EQ(LookOf(*w), middle);
  click(1);  // a slot without an entry
  EXPECT_EQ(LookOf(*w), middle);
  press(0);
  EXPECT_EQ(LookOf(*w), base);
  press(0);  // the last state answers and stays
  EXPECT_EQ(LookOf(*w), base);
  w->cmd(Command(R"({"cmd":"push","style":5,"btn_spec":[{"id":"off"}]})"));
  click(0);  // a window off the screen
  EXPECT_EQ(replies_->replies,
            (std::vector<std::string>{R"({"obj_id":"w1","cmd":"pressed","btn_id":"no"})",
                                      R"({"obj_id":"w1","cmd":"pressed","btn_id":"skip"})",
                                      R"({"obj_id":"w1","cmd":"pressed","btn_id":""})"}));
  replies_->fail = true;
  w->cmd(Command(R"({"cmd":"set","style":1})"));
  testing::internal::CaptureStderr();
  press(0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qem_util: reply channel gone\n");
  EXPECT_EQ(w->stack.size(), 2u);
  qem_test::TakeWrites(*w);
  w->cmd(Command(R"({"cmd":"DELETE","progress":0.5})"));  // only closes
  EXPECT_EQ(qem_test::TakeWrites(*w), 0);
  EXPECT_TRUE(w->Closed());
  EXPECT_FALSE(w->Widget()->isVisible());
}

TEST_F(Commands, AKeyThatCantBeConvertedIsSkippedWithOneLineAndTheRestApply) {
  const struct {
    const char* bad;    // comes after the good keys and replaces one of them
    const char* line;   // the one stderr line, after "qem_util: wProgress "w1": "
    const char* state;  // style, title, progress and the number of entries
  } cases[] = {
      {R"("title":["x"])", R"(key "title" skipped)", "3||0.5|1"},
      {R"("style":{"a":1})", R"(key "style" skipped)", "-|Backup|0.5|1"},
      {R"("progress":{})", R"(key "progress" skipped)", "3|Backup|0|1"},
      {R"("btn_spec":"Stop")", R"(key "btn_spec" skipped)", "3|Backup|0.5|0"},
      {R"("btn_spec":["B",{"id":"a"}])", R"(element 0 of "btn_spec" skipped)", "3|Backup|0.5|1"},
      {R"("btn_spec":[{"id":{"no":1}},{"id":"a"}])", R"(element 0 of "btn_spec" skipped)",
       "3|Backup|0.5|1"},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    auto w = Make(
        std::string(R"({"style":3,"title":"Backup","progress":0.5,"btn_spec":[{"text":"Go"}],)") +
        c.bad + "}");
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.find(std::string("qem_util: wProgress \"w1\": ") + c.line), 0u) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    const progress_state& s = w->state();
    EXPECT_EQ((s.style ? std::to_string(s.style->Value()) : "-") + "|" + s.title + "|" +
                  platform::Str(s.progress) + "|" + std::to_string(s.btn_specs.size()),
              c.state)
        << c.bad;
  }
}

}  // namespace
