// Commands and the stack of states: what "set", "push" and "delete" change, what a press answers,
// the button records read from a command, and that a key which can't be read breaks nothing.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <algorithm>
#include <cstring>

#include "platform/exceptions.h"
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

TEST_F(Commands, EachPressRepliesAndPopsOnePushShowingTheStateBelowAsItWas) {
  auto w = Make(R"({"style":3,"title":"Backup","message":"Copying","progress":0.3,)"
                R"("btn_spec":[{"text":"No id"}]})");
  const std::string base = LookOf(*w);
  w->cmd(Command(R"({"cmd":"push","style":1,"message":"Skip?","btn_spec":[{"id":"skip"}]})"));
  const std::string middle = LookOf(*w);
  w->cmd(Command(R"({"cmd":"Push","style":1,"message":"Replace?",)"
                 R"("btn_spec":[{"id":"yes","text":"Yes"},{"id":"no","text":"No"}]})"));
  w->cmd(Command(R"({"cmd":"set","progress":0.9})"));  // lands on the top state
  // Nothing is inherited from below: no title, no bar, its own buttons.
  EXPECT_EQ(LookOf(*w), "|Replace?|0|900.000000|97|Yes|No");
  qem_test::Press(*w, 1);
  EXPECT_EQ(LookOf(*w), middle);
  qem_test::Press(*w, 0);
  EXPECT_EQ(LookOf(*w), base);
  qem_test::Press(*w, 0);  // the last state answers and stays
  EXPECT_EQ(LookOf(*w), base);
  EXPECT_EQ(replies_->replies,
            (std::vector<std::string>{R"({"obj_id":"w1","cmd":"pressed","btn_id":"no"})",
                                      R"({"obj_id":"w1","cmd":"pressed","btn_id":"skip"})",
                                      R"({"obj_id":"w1","cmd":"pressed","btn_id":""})"}));
}

// An accessibility client reaches buttons that no user can press: a slot without an entry, and
// any button of a window off the screen. Such a press neither answers nor pops.
TEST_F(Commands, APressOfAButtonThatIsNotOnTheScreenDoesNothing) {
  const struct {
    const char *name, *style;
    int button;
  } cases[] = {{"slot without an entry", "1", 1}, {"window off the screen", "5", 0}};
  for (const auto& c : cases) {
    auto w = Make(R"({"style":1,"btn_spec":[{"id":"a"},{"id":"b"}]})");
    w->cmd(
        Command(std::string(R"({"cmd":"push","btn_spec":[{"id":"y"}],"style":)") + c.style + "}"));
    static_cast<QAbstractButton*>(w->btn(c.button).Widget())->click();
    EXPECT_EQ(replies_->replies, std::vector<std::string>{}) << c.name;
    EXPECT_EQ(w->stack.size(), 2u) << c.name;
  }
}

class FailingForwarder : public message_forwarder {
 public:
  void write(const std::string&) override { throw platform::IOException("reply channel gone"); }
};

TEST_F(Commands, AFailedReplyIsReportedAndKeepsThePushedState) {
  auto w = qem_test::MakeWindow(R"({"style":1,"btn_spec":[{"text":"A"}]})", nullptr,
                                std::make_shared<FailingForwarder>());
  w->cmd(Command(R"({"cmd":"push","style":1,"btn_spec":[{"text":"B"}]})"));
  testing::internal::CaptureStderr();
  qem_test::Press(*w, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qem_util: reply channel gone\n");
  EXPECT_EQ(w->btn(0).Caption(), "B");
}

TEST_F(Commands, DeleteIgnoresItsOtherKeysAndOtherWordsDoNothing) {
  auto w = Make(R"({"style":3,"title":"Backup","progress":0.5})");
  qem_test::TakeWrites(*w);
  for (const char* json : {R"({"cmd":"frobnicate","progress":0.9})", R"({"progress":0.9})",
                           R"({"cmd":{"set":1},"progress":0.9})", R"({"cmd":"create"})",
                           R"({"cmd":"DELETE","title":"Other","progress":0.9})"}) {
    w->cmd(Command(json));
    EXPECT_EQ(qem_test::TakeWrites(*w), 0) << json;
  }
  EXPECT_TRUE(w->Closed());
  EXPECT_FALSE(w->Widget()->isVisible());
}

TEST_F(Commands, AKeyThatCantBeConvertedIsSkippedWithOneLineAndTheRestApply) {
  const struct {
    const char* bad;   // comes after the good keys and replaces one of them
    const char* line;  // the one stderr line, after "qem_util: wProgress "w1": "
    std::size_t entries;
  } cases[] = {
      {R"("title":["x"])", R"(key "title" skipped)", 1},
      {R"("style":{"a":1})", R"(key "style" skipped)", 1},
      {R"("message":{})", R"(key "message" skipped)", 1},
      {R"("progress":{})", R"(key "progress" skipped)", 1},
      {R"("btn_spec":"Stop")", R"(key "btn_spec" skipped)", 0},
      {R"("btn_spec":["B",{"id":"a"}])", R"(element 0 of "btn_spec" skipped)", 1},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    auto w = Make(std::string(R"({"style":3,"title":"Backup","message":"Copying","progress":0.5,)"
                              R"("btn_spec":[{"text":"Go"}],)") +
                  c.bad + "}");
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.find(std::string("qem_util: wProgress \"w1\": ") + c.line), 0u) << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
    // The skipped key left its field as a fresh state has it; the others applied.
    const auto skipped = [&](const char* key) { return std::strstr(c.line, key) != nullptr; };
    const progress_state& s = w->state();
    EXPECT_EQ(s.style.has_value(), !skipped("\"style\"")) << c.bad;
    EXPECT_EQ(s.title, skipped("\"title\"") ? "" : "Backup") << c.bad;
    EXPECT_EQ(s.msg, skipped("\"message\"") ? "" : "Copying") << c.bad;
    EXPECT_EQ(s.progress, skipped("\"progress\"") ? 0.0 : 0.5) << c.bad;
    EXPECT_EQ(s.btn_specs.size(), c.entries) << c.bad;
  }
}

// A record reads "id" and "text" alone and skips an element that gives none; the stand-ins for
// slots without an entry are shared for good, one per index, and never shown.
TEST(Records, SpecsReadOnlyIdAndTextAndTheStandInsAreSharedAndHidden) {
  auto d = Command(R"({"a":[{"text":"Only text"},{"id":"v","visible":false,"width":9},)"
                   R"("x",7,{"id":{"no":1}}]})");
  std::vector<std::size_t> skipped;
  auto entries = button_spec::from_dictionary_array(d->Value("a").ArrayValue(),
                                                    [&](std::size_t i) { skipped.push_back(i); });
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]->id, "");
  EXPECT_EQ(entries[1]->text, "");
  for (const auto& s : entries) EXPECT_TRUE(s->visible && s->width == 0.0);
  EXPECT_EQ(skipped, (std::vector<std::size_t>{2, 3, 4}));
  EXPECT_EQ(button_spec::dummy(3), button_spec::dummy(3));
  EXPECT_EQ(button_spec::dummy(2)->index, 2);
  EXPECT_FALSE(button_spec::dummy(2)->visible);
}

}  // namespace
