// Commands and the stack of states: what "set", "push" and "delete" change, the button records
// read from them, and that nothing a caller sends can break a window.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <tuple>

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

TEST_F(Commands, PushThenPressShowsTheStateBelowAsItWas) {
  auto w = Make(R"({"style":3,"title":"Backup","message":"Copying","progress":0.3,)"
                R"("btn_spec":[{"id":"stop","text":"Stop"}]})");
  const std::string before = LookOf(*w);
  w->cmd(Command(R"({"cmd":"push","style":1,"message":"Replace?",)"
                 R"("btn_spec":[{"id":"yes","text":"Yes"},{"id":"no","text":"No"}]})"));
  w->cmd(Command(R"({"cmd":"set","progress":0.9})"));  // lands on the question
  // Nothing is inherited from below: no title, no bar, its own buttons.
  EXPECT_EQ(LookOf(*w), "|Replace?|0|900.000000|97|Yes|No");
  qem_test::Press(*w, 1);
  EXPECT_EQ(replies_->replies,
            std::vector<std::string>{R"({"obj_id":"w1","cmd":"pressed","btn_id":"no"})"});
  EXPECT_EQ(LookOf(*w), before);
}

TEST_F(Commands, ThreePushesNeedThreePressesAndAFourthChangesNoState) {
  auto w = Make(R"({"message":"base","btn_spec":[{"text":"No id"}]})");
  for (const char* id : {"b1", "b2", "b3"}) {
    w->cmd(Command(std::string(R"({"cmd":"Push","message":")") + id + R"(","btn_spec":[{"id":")" +
                   id + R"("}]})"));
  }
  for (const char* title : {"b3", "b2", "b1", "base"}) {
    EXPECT_EQ(w->Title(), title);
    qem_test::Press(*w, 0);
  }
  EXPECT_EQ(w->Title(), "base");
  EXPECT_EQ(w->stack.size(), 1u);
  ASSERT_EQ(replies_->replies.size(), 4u);
  EXPECT_EQ(replies_->replies[3], R"({"obj_id":"w1","cmd":"pressed","btn_id":""})");
}

// An accessibility client reaches buttons that no user can press: a slot without an entry, and
// any button of a window off the screen. Such a press neither answers nor pops.
TEST_F(Commands, APressOfAButtonThatIsNotOnTheScreenDoesNothing) {
  const std::tuple<const char*, const char*, int> cases[] = {{"slot without an entry", "1", 1},
                                                             {"window off the screen", "5", 0}};
  for (const auto& [name, style, button] : cases) {
    auto w = Make(R"({"style":1,"btn_spec":[{"id":"a"},{"id":"b"}]})");
    w->cmd(
        Command(std::string(R"({"cmd":"push","btn_spec":[{"id":"yes"}],"style":)") + style + "}"));
    replies_->replies.clear();
    static_cast<QAbstractButton*>(w->btn(button).Widget())->click();
    EXPECT_EQ(replies_->replies, std::vector<std::string>{}) << name;
    EXPECT_EQ(w->stack.size(), 2u) << name;
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
  qem_test::ResetWrites(*w);
  for (const char* json : {R"({"cmd":"frobnicate","progress":0.9})", R"({"progress":0.9})",
                           R"({"cmd":{"set":1},"progress":0.9})", R"({"cmd":"create"})",
                           R"({"cmd":"DELETE","title":"Other","progress":0.9})"}) {
    w->cmd(Command(json));
    EXPECT_EQ(qem_test::TotalWrites(*w), 0) << json;
  }
  EXPECT_TRUE(w->Closed());
  EXPECT_FALSE(w->Widget()->isVisible());
}

TEST_F(Commands, AKeyThatCantBeConvertedIsSkippedWithOneLineAndTheRestApply) {
  struct Case {
    const char* bad;   // comes after the good keys and replaces one of them
    const char* line;  // the one stderr line, after "qem_util: wProgress "w1": "
    std::size_t entries;
  };
  const Case cases[] = {
      {R"("style":{"a":1})", R"(key "style" skipped)", 1},
      {R"("style":[3])", R"(key "style" skipped)", 1},
      {R"("btn_spec":"Stop")", R"(key "btn_spec" skipped)", 0},
      {R"("btn_spec":{"id":"a"})", R"(key "btn_spec" skipped)", 0},
      {R"("title":["x"])", R"(key "title" skipped)", 1},
      {R"("message":{})", R"(key "message" skipped)", 1},
      {R"("progress":{})", R"(key "progress" skipped)", 1},
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
    const std::string line = c.line;
    const auto skipped = [&](const char* key) { return line.find(key) != std::string::npos; };
    const progress_state& s = w->state();
    EXPECT_EQ(s.style.has_value(), !skipped("\"style\"")) << c.bad;
    EXPECT_EQ(s.title, skipped("\"title\"") ? "" : "Backup") << c.bad;
    EXPECT_EQ(s.msg, skipped("\"message\"") ? "" : "Copying") << c.bad;
    EXPECT_EQ(s.progress, skipped("\"progress\"") ? 0.0 : 0.5) << c.bad;
    EXPECT_EQ(s.btn_specs.size(), c.entries) << c.bad;
    // And the layout ran to its end.
    EXPECT_EQ(w->Height(), w->ProgressBar1().Top() + 40) << c.bad;
    EXPECT_EQ(w->btn(0).Visible(), c.entries == 1) << c.bad;
  }
}

TEST_F(Commands, ExtremeValuesStillGiveAWholeLayout) {
  auto w = qem_test::MakeWindow(R"({"style":3,"message":")" + std::string(200000, 'x') + R"("})",
                                nullptr);
  for (const char* json : {R"({"cmd":"set","progress":1e300})",
                           R"({"cmd":"set","progress":-1e300})", R"({"cmd":"set","style":1e300})",
                           R"({"cmd":"set","style":-1})", R"({"cmd":"set","btn_spec":null})",
                           R"({"cmd":"set","title":null,"message":true})", R"({"cmd":"push"})"}) {
    w->cmd(Command(json));
    EXPECT_EQ(w->Height(), w->ProgressBar1().Top() + 40) << json;
  }
  EXPECT_EQ(w->stack.size(), 2u);
}

// The layout never compares styles; callers that order them rely on this.
TEST(Records, AStyleComparesAboveNilAndByValue) {
  using progress_helpers::prog_style;
  const prog_style two = prog_style::has_progress();
  EXPECT_EQ(prog_style::none().Compare(nullptr), -1);
  EXPECT_EQ(prog_style::hidden().Compare(&two), 1);
  EXPECT_EQ(prog_style::has_message().Compare(&two), -1);
  EXPECT_EQ(two.Compare(&two), 0);
}

TEST(Records, SpecsReadOnlyIdAndTextAndSkipWhatIsNoObject) {
  auto d = qem_test::Command(R"({"a":[{"text":"Only text"},{"id":"v","visible":false,"width":9},)"
                             R"("x",7,{"id":{"no":1}}]})");
  std::vector<std::size_t> skipped;
  auto entries = button_spec::from_dictionary_array(d->Value("a").ArrayValue(),
                                                    [&](std::size_t i) { skipped.push_back(i); });
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]->id, "");
  EXPECT_EQ(entries[1]->text, "");
  for (const auto& s : entries) EXPECT_TRUE(s->visible && s->width == 0.0);
  EXPECT_EQ(skipped, (std::vector<std::size_t>{2, 3, 4}));
  // The stand-ins are shared for good, one per index, and never shown.
  EXPECT_EQ(button_spec::dummy(3), button_spec::dummy(3));
  EXPECT_EQ(button_spec::dummy(2)->index, 2);
  EXPECT_FALSE(button_spec::dummy(2)->visible);
}

}  // namespace
