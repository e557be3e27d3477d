// The layout: where every control goes for each style, the bar's value, and that a layout
// writes only what changed.

#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>

#include "progress_fixture.h"

namespace {

using platform::Property;
using qem_test::Command;
using qem_test::MakeWindow;

struct Rect {
  std::int64_t left, top, width, height;
  bool operator==(const Rect&) const = default;
};

Rect RectOf(const platform::DesktopUIControl& c) {
  return {c.Left(), c.Top(), c.Width(), c.Height()};
}

std::ostream& operator<<(std::ostream& out, const Rect& r) {
  return out << "(" << r.left << ", " << r.top << ", " << r.width << ", " << r.height << ")";
}

class Layout : public ::testing::Test {
 protected:
  void SetUp() override {
    measurer_->heights = {{"Copying", 34.0}};
    measurer_->widths = {{"Stop", 47.5}, {"Skip file", 61.2}};
  }
  std::shared_ptr<qem_test::TableMeasurer> measurer_ = std::make_shared<qem_test::TableMeasurer>();
};

TEST_F(Layout, WorkedExampleWithAndWithoutBar) {
  struct Case {
    const char* name;
    int style;
    Rect first, second, bar;
  };
  const Case cases[] = {
      {"bar", 3, {442, 74, 67, 22}, {340, 74, 81, 22}, {20, 74, 300, 20}},
      {"centred", 1, {281, 74, 67, 22}, {179, 74, 81, 22}, {20, 74, 139, 20}},
  };
  for (const auto& c : cases) {
    auto w = MakeWindow(R"({"style":)" + std::to_string(c.style) +
                            R"(,"message":"Copying","btn_spec":[{"id":"s","text":"Stop"},)"
                            R"({"id":"k","text":"Skip file"}]})",
                        measurer_);
    EXPECT_EQ(RectOf(w->Label1()), (Rect{20, 20, 490, 34})) << c.name;
    EXPECT_EQ(RectOf(w->btn(0)), c.first) << c.name;
    EXPECT_EQ(RectOf(w->btn(1)), c.second) << c.name;
    EXPECT_EQ(RectOf(w->ProgressBar1()), c.bar) << c.name;
    EXPECT_EQ(w->ProgressBar1().Visible(), c.style == 3) << c.name;
    EXPECT_EQ(w->Height(), 114) << c.name;
    EXPECT_EQ(w->Width(), 530) << c.name;
  }
}

TEST_F(Layout, StylesDecideLabelBarTitleHeightAndVisibility) {
  struct Case {
    const char* name;
    const char* style;  // JSON member, or "" for a state without a style
    bool label, bar, shown;
    const char* title;
    std::int64_t height;
  };
  const Case cases[] = {
      {"none", R"("style":0,)", false, false, true, "Copying", 60},
      {"message", R"("style":1,)", true, false, true, "Backup", 114},
      {"progress", R"("style":2,)", false, true, true, "Copying", 60},
      {"message and progress", R"("style":3,)", true, true, true, "Backup", 114},
      {"unknown bit only", R"("style":8,)", false, false, true, "Copying", 60},
      {"hidden", R"("style":4,)", false, false, false, "Copying", 60},
      {"hidden with both", R"("style":7,)", true, true, false, "Backup", 114},
      {"no style at all", "", false, false, true, "Copying", 60},
  };
  for (const auto& c : cases) {
    auto w = MakeWindow(std::string("{") + c.style + R"("title":"Backup","message":"Copying"})",
                        measurer_);
    w->Show();
    w->reformat();
    EXPECT_EQ(w->Label1().Visible(), c.label) << c.name;
    EXPECT_EQ(w->ProgressBar1().Visible(), c.bar) << c.name;
    EXPECT_EQ(w->Visible(), c.shown) << c.name;
    EXPECT_EQ(w->Widget()->isVisible(), c.shown) << c.name;
    EXPECT_EQ(w->Title(), c.title) << c.name;
    EXPECT_EQ(w->Height(), c.height) << c.name;
    // The row is reserved for the bar whether or not it shows.
    EXPECT_EQ(w->ProgressBar1().Top(), c.height - 40) << c.name;
  }
  // A height under the window's minimum is asked for all the same; Qt shows the minimum.
  auto bar_only = MakeWindow(R"({"style":2})", measurer_);
  EXPECT_EQ(RectOf(bar_only->ProgressBar1()), (Rect{20, 20, 490, 20}));
  EXPECT_EQ(bar_only->Widget()->height(), 64);
}

TEST_F(Layout, OneButtonWithoutBarIsCentredAboveAGapOf18) {
  auto w = MakeWindow(R"({"style":1,"message":"Copying","btn_spec":[{"text":"Stop"}]})", measurer_);
  const auto& b = w->btn(0);
  // The row's right edge at (530 + 67) / 2 = 298, the button 67.5 to the left of it, truncated.
  EXPECT_EQ(b.Left(), 230);
  EXPECT_EQ(w->Height() - (b.Top() + b.Height()), 18);
}

TEST_F(Layout, ProgressSetsTheBarValueUntruncatedAndUnclamped) {
  struct Case {
    const char* name;
    const char* progress;
    bool indeterminate;
    double value;  // as read back
    int shown;     // as the Qt bar shows it; -1 for busy
  };
  // One window through the whole sequence: an indeterminate bar keeps its last value.
  const Case cases[] = {
      {"half", "0.5", false, 500, 500},
      {"truncates", "0.9999", false, 999, 999},
      {"full", "1.0", false, 1000, 1000},
      {"above full", "1.5", false, 1500, 1000},
      {"negative zero", "-0.0", false, 0, 0},
      {"negative", "-0.25", true, 0, -1},
      {"back to determinate", "0.25", false, 250, 250},
  };
  auto w = MakeWindow(R"({"style":2})", measurer_);
  auto* qt_bar = static_cast<QProgressBar*>(w->ProgressBar1().Widget());
  for (const auto& c : cases) {
    w->cmd(Command(std::string(R"({"cmd":"set","progress":)") + c.progress + "}"));
    EXPECT_EQ(w->ProgressBar1().Indeterminate(), c.indeterminate) << c.name;
    EXPECT_EQ(w->ProgressBar1().Value(), c.value) << c.name;
    EXPECT_EQ(w->ProgressBar1().MaximumValue(), 1000) << c.name;
    if (c.shown < 0) {
      EXPECT_EQ(qt_bar->maximum(), 0) << c.name;
    } else {
      EXPECT_EQ(qt_bar->maximum(), 1000) << c.name;
      EXPECT_EQ(qt_bar->value(), c.shown) << c.name;
    }
  }
}

TEST_F(Layout, FewerSpecsHideTheRestAndTheFifthIsNeverShown) {
  auto w = MakeWindow(
      R"({"style":3,"message":"Copying","btn_spec":[{"text":"Stop"},{"text":"Skip file"}]})",
      measurer_);
  const Rect first = RectOf(w->btn(0));
  w->cmd(Command(R"({"cmd":"set","btn_spec":[{"text":"Stop"}]})"));
  EXPECT_EQ(RectOf(w->btn(0)), first);
  EXPECT_FALSE(w->btn(1).Visible());
  EXPECT_EQ(w->btn(1).Caption(), "Skip file");  // kept on the hidden control
  EXPECT_EQ(w->ProgressBar1().Width(), first.left - 20 - 20);

  w->cmd(Command(R"({"cmd":"set","btn_spec":[{"text":"a"},{"text":"b"},{"text":"c"},)"
                 R"({"text":"d"},{"text":"e"}]})"));
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(w->btn(i).Visible()) << i;
  EXPECT_EQ(w->btn(3).Caption(), "d");
  EXPECT_EQ(w->state().btn_specs.size(), 5u);
}

TEST_F(Layout, ASetOfProgressAloneWritesOnlyTheBarValue) {
  auto w = MakeWindow(R"({"style":3,"title":"Backup","message":"Copying","progress":0.25,)"
                      R"("btn_spec":[{"id":"s","text":"Stop"}]})",
                      measurer_);
  qem_test::ResetWrites(*w);
  w->cmd(Command(R"({"cmd":"set","progress":0.5})"));
  EXPECT_EQ(w->ProgressBar1().Writes().Of(Property::Value), 1);
  EXPECT_EQ(qem_test::TotalWrites(*w), 1);

  // The same keys again change nothing, so nothing is written.
  qem_test::ResetWrites(*w);
  w->cmd(Command(R"({"cmd":"set","style":3,"title":"Backup","message":"Copying",)"
                 R"("progress":0.5,"btn_spec":[{"id":"s","text":"Stop"}]})"));
  EXPECT_EQ(qem_test::TotalWrites(*w), 0);
}

TEST_F(Layout, LetterCaseCountsInCaptionsOnly) {
  struct Case {
    const char* name;
    const char* keys;
    long writes;
  };
  const Case cases[] = {
      {"title", R"("title":"BACKUP")", 0},
      {"message", R"("message":"COPYING")", 0},
      {"caption", R"("btn_spec":[{"id":"s","text":"STOP"}])", 1},
  };
  for (const auto& c : cases) {
    measurer_->widths["STOP"] = 47.5;
    measurer_->heights["COPYING"] = 34.0;
    auto w = MakeWindow(R"({"style":3,"title":"Backup","message":"Copying",)"
                        R"("btn_spec":[{"id":"s","text":"Stop"}]})",
                        measurer_);
    qem_test::ResetWrites(*w);
    w->cmd(Command(std::string(R"({"cmd":"set",)") + c.keys + "}"));
    EXPECT_EQ(qem_test::TotalWrites(*w), c.writes) << c.name;
  }
}

TEST(LayoutWithRealFonts, RowAndLabelFollowTheMeasuredText) {
  const std::string message =
      "Copying 1,204 files from the project folder to the backup disk; this may take a while "
      "and the window will stay above the other windows until it is done.";
  for (int style : {3, 1}) {
    auto w = MakeWindow(R"({"style":)" + std::to_string(style) + R"(,"message":")" + message +
                            R"(","btn_spec":[{"text":"OK"},{"text":"Cancel the copy"}]})",
                        nullptr);
    const auto& first = w->btn(0);
    const auto& second = w->btn(1);
    const auto& label = w->Label1();
    const auto& bar = w->ProgressBar1();
    const std::int64_t row = label.Top() + label.Height() + 20;
    EXPECT_GT(second.Width(), first.Width());
    EXPECT_GT(first.Width(), 20);
    // Each edge is truncated on its own, so a gap between buttons is 20 or 21.
    const std::int64_t gap = first.Left() - (second.Left() + second.Width());
    EXPECT_GE(gap, 20) << style;
    EXPECT_LE(gap, 21) << style;
    EXPECT_EQ(first.Top(), row);
    EXPECT_EQ(w->Height(), row + 40) << style;
    // The label is as high as the word-wrapping label itself wants to be at its width.
    auto* qt_label = static_cast<QLabel*>(label.Widget());
    EXPECT_EQ(label.Height(), qt_label->heightForWidth(static_cast<int>(label.Width())));
    if (style == 3) {
      EXPECT_GE(first.Left() + first.Width(), 530 - 20 - 1);
      EXPECT_LE(first.Left() + first.Width(), 530 - 20);
      EXPECT_EQ(bar.Left() + bar.Width() + 20, second.Left());
    } else {
      // Centred: as much room left of the row as right of it, give or take a point for each
      // truncated edge.
      const std::int64_t left_room = second.Left();
      const std::int64_t right_room = 530 - (first.Left() + first.Width());
      EXPECT_LE(std::abs(left_room - right_room), 5) << left_room << " " << right_room;
      EXPECT_FALSE(bar.Visible());
    }
  }
}

}  // namespace
