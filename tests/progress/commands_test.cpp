// Commands and the stack of states: what "set", "push" and "delete" change, and that nothing a
// caller sends can break a window.

#include <gtest/gtest.h>

#include <QProgressBar>

#include "progress_fixture.h"

namespace {

using qem_test::Command;
using qem_test::MakeWindow;

// What a user sees of a window, enough to tell one state from another.
struct Look {
  std::string title, label;
  bool bar;
  double value;
  std::vector<std::string> captions;  // of the visible buttons
  std::int64_t height;
  bool operator==(const Look&) const = default;
};

Look LookOf(const wProgress& w) {
  Look look{w.Title(),
            w.Label1().Visible() ? w.Label1().Text() : "",
            w.ProgressBar1().Visible(),
            w.ProgressBar1().Value(),
            {},
            w.Height()};
  for (const auto* b : w.btns()) {
    if (b->Visible()) look.captions.push_back(b->Caption());
  }
  return look;
}

class Commands : public ::testing::Test {
 protected:
  std::shared_ptr<qem_test::TableMeasurer> measurer_ = std::make_shared<qem_test::TableMeasurer>();
  std::shared_ptr<qem_test::RecordingForwarder> replies_ =
      std::make_shared<qem_test::RecordingForwarder>();
  std::unique_ptr<wProgress> Make(const std::string& json) {
    auto w = MakeWindow(json, measurer_, replies_);
    w->Show();
    return w;
  }
};

TEST_F(Commands, PushThenPressShowsTheStateBelowAsItWas) {
  auto w = Make(R"({"style":3,"title":"Backup","message":"Copying","progress":0.3,)"
                R"("btn_spec":[{"id":"stop","text":"Stop"}]})");
  const Look before = LookOf(*w);
  w->cmd(Command(R"({"cmd":"push","style":1,"message":"Replace the file?",)"
                 R"("btn_spec":[{"id":"yes","text":"Yes"},{"id":"no","text":"No"}]})"));
  // Nothing is inherited: the pushed state has no title and no bar.
  EXPECT_EQ(LookOf(*w), (Look{"", "Replace the file?", false, 0, {"Yes", "No"}, 97}));
  // Progress sent while the question is up lands on the question.
  w->cmd(Command(R"({"cmd":"set","progress":0.9})"));
  qem_test::Press(*w, 1);
  EXPECT_EQ(replies_->replies,
            (std::vector<std::string>{R"({"obj_id":"w1","cmd":"pressed","btn_id":"no"})"}));
  EXPECT_EQ(LookOf(*w), before);
  EXPECT_EQ(w->stack.size(), 1u);
}

TEST_F(Commands, ThreePushesNeedThreePressesAndAFourthChangesNoState) {
  auto w = Make(R"({"style":0,"message":"base","btn_spec":[{"id":"b0","text":"B"}]})");
  for (int i = 1; i <= 3; ++i) {
    w->cmd(Command(R"({"cmd":"Push","style":0,"message":"level )" + std::to_string(i) +
                   R"(","btn_spec":[{"id":"b)" + std::to_string(i) + R"(","text":"B"}]})"));
  }
  EXPECT_EQ(w->Title(), "level 3");
  for (std::size_t depth = 4; depth >= 1; --depth) {
    EXPECT_EQ(w->stack.size(), depth);
    qem_test::Press(*w, 0);
  }
  EXPECT_EQ(w->stack.size(), 1u);
  EXPECT_EQ(w->Title(), "base");
  ASSERT_EQ(replies_->replies.size(), 4u);
  EXPECT_EQ(replies_->replies[0], R"({"obj_id":"w1","cmd":"pressed","btn_id":"b3"})");
  EXPECT_EQ(replies_->replies[3], R"({"obj_id":"w1","cmd":"pressed","btn_id":"b0"})");
}

TEST_F(Commands, DeleteClosesAndIgnoresItsOtherKeys) {
  auto w = Make(R"({"style":3,"title":"Backup","progress":0.5})");
  qem_test::ResetWrites(*w);
  w->cmd(Command(R"({"cmd":"DELETE","title":"Other","progress":0.9,"style":0})"));
  EXPECT_TRUE(w->Closed());
  EXPECT_FALSE(w->Widget()->isVisible());
  EXPECT_EQ(qem_test::TotalWrites(*w), 0);
  EXPECT_EQ(w->Title(), "Backup");
}

TEST_F(Commands, UnknownOrMissingWordsDoNothing) {
  auto w = Make(R"({"style":2,"progress":0.5})");
  qem_test::ResetWrites(*w);
  for (const char* json : {R"({"cmd":"frobnicate","progress":0.9})", R"({"progress":0.9})",
                           R"({"cmd":{"set":1},"progress":0.9})", R"({"cmd":"create"})"}) {
    w->cmd(Command(json));
    EXPECT_EQ(qem_test::TotalWrites(*w), 0) << json;
  }
  w->cmd(nullptr);
  EXPECT_EQ(w->stack.size(), 1u);
}

TEST_F(Commands, AKeyThatCantBeConvertedIsSkippedWithOneLineAndTheRestApply) {
  struct Case {
    const char* name;
    const char* bad;   // a key that comes after the good ones and replaces one of them
    const char* line;  // the one stderr line, after the window's name
    std::size_t specs;
  };
  const Case cases[] = {
      {"style object", R"("style":{"a":1})", R"(key "style" skipped)", 1},
      {"style array", R"("style":[3])", R"(key "style" skipped)", 1},
      {"btn_spec text", R"("btn_spec":"Stop")", R"(key "btn_spec" skipped)", 0},
      {"btn_spec object", R"("btn_spec":{"id":"a"})", R"(key "btn_spec" skipped)", 0},
      {"title array", R"("title":["x"])", R"(key "title" skipped)", 1},
      {"message object", R"("message":{})", R"(key "message" skipped)", 1},
      {"progress object", R"("progress":{})", R"(key "progress" skipped)", 1},
      {"btn_spec element", R"("btn_spec":["B",{"id":"a","text":"A"}])",
       R"(element 0 of "btn_spec" skipped)", 1},
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStderr();
    auto w = Make(std::string(R"({"style":3,"title":"Backup","message":"Copying","progress":0.5,)"
                              R"("btn_spec":[{"text":"Go"}],)") +
                  c.bad + "}");
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err.find(std::string("qem_util: wProgress \"w1\": ") + c.line), 0u)
        << c.name << ": " << err;
    EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << c.name << ": " << err;
    // The other keys applied; the skipped one left its field as a fresh state has it.
    const std::string key = c.line;
    const progress_state& s = w->state();
    EXPECT_EQ(s.style.has_value(), key.find("\"style\"") == std::string::npos) << c.name;
    EXPECT_EQ(s.title, key.find("\"title\"") == std::string::npos ? "Backup" : "") << c.name;
    EXPECT_EQ(s.msg, key.find("\"message\"") == std::string::npos ? "Copying" : "") << c.name;
    EXPECT_EQ(s.progress, key.find("\"progress\"") == std::string::npos ? 0.5 : 0.0) << c.name;
    EXPECT_EQ(s.btn_specs.size(), c.specs) << c.name;
    // And the layout ran to its end.
    EXPECT_EQ(w->Height(), w->ProgressBar1().Top() + 40) << c.name;
    EXPECT_EQ(w->btn(0).Visible(), c.specs == 1) << c.name;
  }
}

TEST_F(Commands, ExtremeValuesStillGiveAWholeLayout) {
  const std::string long_message(200000, 'x');
  const char* const commands[] = {
      R"({"cmd":"set","progress":1e300})",
      R"({"cmd":"set","progress":-1e300})",
      R"({"cmd":"set","style":1e300})",
      R"({"cmd":"set","style":-1})",
      R"({"cmd":"set","btn_spec":null})",
      R"({"cmd":"set","title":null,"message":true})",
      R"({"cmd":"push"})",
  };
  auto w = MakeWindow(R"({"style":3,"message":")" + long_message + R"("})", nullptr);
  for (const char* json : commands) {
    w->cmd(Command(json));
    EXPECT_EQ(w->Height(), w->ProgressBar1().Top() + 40) << json;
  }
  EXPECT_EQ(w->stack.size(), 2u);
}

}  // namespace
