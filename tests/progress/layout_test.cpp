// The layout: where every control goes for each style, the bar's value, and that a layout
// writes only what changed.

#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>

#include "progress_fixture.h"

namespace {

using qem_test::Command;
using qem_test::MakeWindow;

using Rect = std::array<std::int64_t, 4>;  // left, top, width, height
Rect RectOf(const platform::DesktopUIControl& c) {
  return {c.Left(), c.Top(), c.Width(), c.Height()};
}

class Layout : public ::testing::Test {
 protected:
  std::unique_ptr<wProgress> Make(const std::string& json) { return MakeWindow(json, measurer_); }
  std::shared_ptr<qem_test::TableMeasurer> measurer_ = [] {
    auto m = std::make_shared<qem_test::TableMeasurer>();
    m->heights = {{"Copying", 34.0}, {"COPYING", 34.0}};
    m->widths = {{"Stop", 47.5}, {"STOP", 47.5}, {"Skip file", 61.2}};
    return m;
  }();
};

TEST_F(Layout, WorkedExampleWithAndWithoutBar) {
  struct Case {
    int style;
    Rect first, second, bar;
  };
  const Case cases[] = {{3, {442, 74, 67, 22}, {340, 74, 81, 22}, {20, 74, 300, 20}},
                        {1, {281, 74, 67, 22}, {179, 74, 81, 22}, {20, 74, 139, 20}}};
  for (const auto& c : cases) {
    auto w = Make(R"({"style":)" + std::to_string(c.style) +
                  R"(,"message":"Copying","btn_spec":[{"text":"Stop"},{"text":"Skip file"}]})");
    EXPECT_EQ(RectOf(w->Label1()), (Rect{20, 20, 490, 34})) << c.style;
    EXPECT_EQ(RectOf(w->btn(0)), c.first) << c.style;
    EXPECT_EQ(RectOf(w->btn(1)), c.second) << c.style;
    EXPECT_EQ(RectOf(w->ProgressBar1()), c.bar) << c.style;
    EXPECT_EQ(w->Height(), 114) << c.style;
    EXPECT_EQ(measurer_->wrap_width, 490) << c.style;  // the message wraps at the label's width
  }
}

TEST_F(Layout, StylesDecideLabelBarTitleHeightAndVisibility) {
  struct Case {
    const char* style;  // JSON member; "" for a state without a style
    bool label, bar, shown;
    const char* title;
    std::int64_t height;
  };
  const Case cases[] = {
      {R"("style":0,)", false, false, true, "Copying", 60},
      {R"("style":1,)", true, false, true, "Backup", 114},
      {R"("style":2,)", false, true, true, "Copying", 60},
      {R"("style":3,)", true, true, true, "Backup", 114},
      {R"("style":8,)", false, false, true, "Copying", 60},
      {R"("style":4,)", false, false, false, "Copying", 60},
      {R"("style":7,)", true, true, false, "Backup", 114},
      {"", false, false, true, "Copying", 60},
  };
  for (const auto& c : cases) {
    auto w = Make(std::string("{") + c.style + R"("title":"Backup","message":"Copying"})");
    w->reformat();  // Show puts even a hidden window on the screen until the next layout
    EXPECT_EQ(w->Label1().Visible(), c.label) << c.style;
    EXPECT_EQ(w->ProgressBar1().Visible(), c.bar) << c.style;
    EXPECT_EQ(w->Widget()->isVisible(), c.shown) << c.style;
    EXPECT_EQ(w->Title(), c.title) << c.style;
    EXPECT_EQ(w->Height(), c.height) << c.style;
    EXPECT_EQ(w->ProgressBar1().Top(), c.height - 40) << c.style;  // a hidden bar keeps its row
  }
  auto one_button = Make(R"({"style":1,"message":"Copying","btn_spec":[{"text":"Stop"}]})");
  EXPECT_EQ(RectOf(one_button->btn(0)), (Rect{230, 74, 67, 22}));  // (530 + 67) / 2 - 67.5
  auto hidden = Make(R"({"style":4})");
  hidden->reformat();
  hidden->cmd(Command(R"({"cmd":"set","style":3})"));
  EXPECT_TRUE(hidden->Widget()->isVisible());
  // Qt can't show a height under the minimum; the layout's own value is kept all the same.
  EXPECT_EQ(Make(R"({"style":2})")->Widget()->height(), 64);
}

TEST_F(Layout, ProgressBecomesTheBarValueTruncatedUnclampedOrBusy) {
  struct Case {
    const char* progress;
    double value;  // read back; an indeterminate bar keeps the last one
    int shown;     // what the Qt bar shows; -1 for busy
  };
  const Case cases[] = {{"0.5", 500, 500},   {"0.9999", 999, 999}, {"1.0", 1000, 1000},
                        {"1.5", 1500, 1000}, {"-0.0", 0, 0},       {"-0.25", 0, -1},
                        {"0.25", 250, 250}};
  auto w = Make(R"({"style":2})");
  const auto* qt_bar = static_cast<QProgressBar*>(w->ProgressBar1().Widget());
  for (const auto& c : cases) {
    w->cmd(Command(std::string(R"({"cmd":"set","progress":)") + c.progress + "}"));
    EXPECT_EQ(w->ProgressBar1().Indeterminate(), c.shown < 0) << c.progress;
    EXPECT_EQ(w->ProgressBar1().Value(), c.value) << c.progress;
    EXPECT_EQ(qt_bar->maximum(), c.shown < 0 ? 0 : 1000) << c.progress;
    EXPECT_TRUE(c.shown < 0 || qt_bar->value() == c.shown) << c.progress;
  }
}

TEST_F(Layout, WritesOnlyWhatChangedAndLetterCaseCountsInCaptionsOnly) {
  const std::string create = R"({"style":3,"title":"Backup","message":"Copying","progress":0.25,)"
                             R"("btn_spec":[{"id":"s","text":"Stop"}]})";
  struct Case {
    const char* keys;
    long writes;
  };
  const Case cases[] = {
      {R"("progress":0.5)", 1},  // the bar's Value, nothing else
      {R"("style":3,"title":"Backup","message":"Copying","progress":0.25,)"
       R"("btn_spec":[{"id":"s","text":"Stop"}])",
       0},
      {R"("title":"BACKUP","message":"COPYING")", 0},
      {R"("btn_spec":[{"id":"s","text":"STOP"}])", 1},
  };
  for (const auto& c : cases) {
    auto w = Make(create);
    qem_test::ResetWrites(*w);
    w->cmd(Command(std::string(R"({"cmd":"set",)") + c.keys + "}"));
    EXPECT_EQ(qem_test::TotalWrites(*w), c.writes) << c.keys;
  }
}

TEST_F(Layout, FewerSpecsHideTheRestAndAFifthIsNeverShown) {
  auto w = Make(R"({"style":3,"btn_spec":[{"text":"Stop"},{"text":"Skip file"}]})");
  const Rect first = RectOf(w->btn(0));
  w->cmd(Command(R"({"cmd":"set","btn_spec":[{"text":"Stop"}]})"));
  EXPECT_EQ(RectOf(w->btn(0)), first);
  EXPECT_FALSE(w->btn(1).Visible());
  EXPECT_EQ(w->ProgressBar1().Width(), first[0] - 40);
  w->cmd(Command(R"({"cmd":"set","btn_spec":[{},{},{},{"text":"d"},{"text":"e"}]})"));
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(w->btn(i).Visible()) << i;
  EXPECT_EQ(w->btn(3).Caption(), "d");
}

TEST(LayoutWithRealFonts, RowFollowsTheMeasuredText) {
  for (int style : {3, 1}) {
    auto w = MakeWindow(R"({"style":)" + std::to_string(style) +
                            R"(,"message":"Copying 1,204 files from the project folder to the )"
                            R"(backup disk; this may take a while and the window stays above )"
                            R"(the others until it is done.","btn_spec":[{"text":"OK"},)"
                            R"({"text":"Cancel the copy"}]})",
                        nullptr);
    const auto &first = w->btn(0), &second = w->btn(1);
    const auto& label = w->Label1();
    const std::int64_t row = label.Top() + label.Height() + 20;
    EXPECT_GT(second.Width(), first.Width());
    // Each edge is truncated on its own, so gaps and margins may be a point wider.
    const std::int64_t gap = first.Left() - (second.Left() + second.Width());
    EXPECT_TRUE(gap == 20 || gap == 21) << gap;
    EXPECT_EQ(first.Top(), row);
    EXPECT_EQ(w->Height(), row + 40);
    // As high as the word-wrapping label wants to be at its width, so the text fits.
    EXPECT_EQ(
        label.Height(),
        static_cast<QLabel*>(label.Widget())->heightForWidth(static_cast<int>(label.Width())));
    const std::int64_t right_room = 530 - (first.Left() + first.Width());
    if (style == 3) {
      EXPECT_TRUE(right_room == 20 || right_room == 21) << right_room;
      EXPECT_EQ(w->ProgressBar1().Left() + w->ProgressBar1().Width() + 20, second.Left());
    } else {
      EXPECT_LE(std::abs(second.Left() - right_room), 5) << second.Left() << " " << right_room;
    }
  }
}

}  // namespace
