// The layout of a progress window as a function of its state: where each part goes for each
// style, which parts show, the order the buttons stand in, and the bar's value. Known text sizes
// stand in for a font's: no display, no window.

#include "progress/progress_layout.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "table_measurer.h"

namespace {

using progress_helpers::prog_style;

// 500 points wide: two lines at the label's width of 490, one at the window's width of 530.
const std::string kTwoLines = "Copying 1,204 files from the project to the backup";

progress_state State(std::optional<std::int64_t> style, const std::string& message,
                     const std::vector<std::string>& captions = {}, double progress = 0.0) {
  progress_state s;
  if (style) {
    auto flags = prog_style::none();
    flags = *style;
    s.style = flags;
  }
  s.title = "Backup";
  s.msg = message;
  s.progress = progress;
  for (const auto& caption : captions) {
    auto entry = std::make_shared<button_spec>();
    entry->text = caption;
    entry->visible = true;
    s.btn_specs.push_back(entry);
  }
  return s;
}

std::string Text(const progress_layout::rect& r) {
  return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.width) +
         "," + std::to_string(r.height);
}

// The look in one line: label, the visible buttons left to right by slot, bar, window height,
// title bar, and whether the window stays off the screen. "-" marks a part that doesn't show.
std::string Look(const progress_layout::result& r) {
  std::string look = (r.label_visible ? "label " : "label- ") + Text(r.label);
  for (std::size_t slot : r.on_screen) {
    look += " | " + std::to_string(slot) + " " + Text(r.buttons[slot].place);
  }
  look += (r.bar_visible ? " | bar " : " | bar- ") + Text(r.bar);
  return look + " | " + std::to_string(r.height) + " | " + r.title_bar +
         (r.hidden ? " | hidden" : "");
}

class ProgressLayout : public ::testing::Test {
 protected:
  progress_layout::result Compute(const progress_state& s) {
    return progress_layout::compute(s, 530, measurer_);
  }
  qem_test::TableMeasurer measurer_ = [] {
    qem_test::TableMeasurer m;
    m.widths = {{"Stop", 47.5}, {"Skip file", 61.2}, {"COPYING", 600}};
    return m;
  }();
};

TEST_F(ProgressLayout, StylesAndButtonsDecideWhereEachPartGoes) {
  const std::string too_wide(60, 'x');
  struct Case {
    const char* name;
    progress_state state;
    const char* look;
  };
  const Case cases[] = {
      {"bar and buttons", State(3, kTwoLines, {"Stop", "Skip file"}),
       "label 20,20,490,34 | 1 340,74,81,22 | 0 442,74,67,22 | bar 20,74,300,20 | 114 | Backup"},
      {"buttons centred without a bar", State(1, kTwoLines, {"Stop", "Skip file"}),
       "label 20,20,490,34 | 1 179,74,81,22 | 0 281,74,67,22 | bar- 20,74,139,20 | 114 | Backup"},
      {"one button centred", State(1, "Copying", {"Stop"}),
       "label 20,20,490,17 | 0 230,57,67,22 | bar- 20,57,190,20 | 97 | Backup"},
      {"every flag", State(7, kTwoLines, {"Stop"}),
       "label 20,20,490,34 | 0 442,74,67,22 | bar 20,74,402,20 | 114 | Backup | hidden"},
      {"style none", State(0, "Copying"), "label- 20,0,490,0 | bar- 20,20,245,20 | 60 | Copying"},
      {"no style", State(std::nullopt, "Copying"),
       "label- 20,0,490,0 | bar- 20,20,245,20 | 60 | Copying"},
      {"unknown flag", State(8, "Copying"), "label- 20,0,490,0 | bar- 20,20,245,20 | 60 | Copying"},
      {"bar alone", State(2, "Copying"), "label- 20,0,490,0 | bar 20,20,490,20 | 60 | Copying"},
      {"hidden", State(4, "Copying"),
       "label- 20,0,490,0 | bar- 20,20,245,20 | 60 | Copying | hidden"},
      {"empty captions and a fifth entry", State(2, "Copying", {"", "", "", "d", "e"}),
       "label- 20,0,490,0 | 3 360,20,30,22 | 2 410,20,20,22 | 1 450,20,20,22 | 0 490,20,20,22 | "
       "bar 20,20,320,20 | 60 | Copying"},
      {"too wide for the row", State(2, "Copying", {too_wide}),
       "label- 20,0,490,0 | 0 -110,20,620,22 | bar 20,20,-150,20 | 60 | Copying"},
  };
  for (const auto& c : cases) EXPECT_EQ(Look(Compute(c.state)), c.look) << c.name;
}

TEST_F(ProgressLayout, ProgressBecomesTheBarValueTruncatedUnclampedOrBusy) {
  struct Case {
    double progress;
    bool busy;
    std::int64_t value;
  };
  const Case cases[] = {{0.5, false, 500},  {0.9999, false, 999}, {1.0, false, 1000},
                        {1.5, false, 1500}, {-0.0, false, 0},     {-0.25, true, 0}};
  for (const auto& c : cases) {
    const auto r = Compute(State(2, "", {}, c.progress));
    EXPECT_EQ(r.indeterminate, c.busy) << c.progress;
    EXPECT_EQ(r.bar_value, c.value) << c.progress;
    EXPECT_EQ(r.bar_maximum, 1000) << c.progress;
  }
}

// The label keeps its text when the message changes in letter case only, and so its height must
// be that of the text it keeps.
TEST_F(ProgressLayout, TheLabelIsMeasuredWithTheTextItShows) {
  progress_layout::shown now;
  now.label_text = "COPYING";
  const auto kept = progress_layout::compute(State(1, "Copying"), 530, measurer_, now);
  EXPECT_EQ(kept.message, "COPYING");
  EXPECT_EQ(kept.label.height, 34);
  now.label_text = "Other";
  const auto changed = progress_layout::compute(State(1, "Copying"), 530, measurer_, now);
  EXPECT_EQ(changed.message, "Copying");
  EXPECT_EQ(changed.label.height, 17);
}

}  // namespace
