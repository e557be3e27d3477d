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
    s.style = prog_style::none();
    *s.style = *style;
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

// The look in one line: label, the visible buttons left to right by slot, bar and its value on
// its scale, window height, title bar, and whether the window stays off the screen. "-" marks a
// part that doesn't show.
std::string Look(const progress_layout::result& r) {
  std::string look = (r.label_visible ? "label " : "label- ") + Text(r.label);
  for (std::size_t slot : r.on_screen) {
    look += " | " + std::to_string(slot) + " " + Text(r.buttons[slot].place);
  }
  look += (r.bar_visible ? " | bar " : " | bar- ") + Text(r.bar);
  look += r.indeterminate ? " busy"
                          : " " + std::to_string(r.bar_value) + "/" + std::to_string(r.bar_maximum);
  return look + " | " + std::to_string(r.height) + " | " + r.title_bar +
         (r.hidden ? " | hidden" : "");
}

TEST(ProgressLayout, StyleButtonsAndProgressDecideWhereEachPartGoesAndWhatShows) {
  qem_test::TableMeasurer measurer;
  measurer.widths = {{"Stop", 47.5}, {"Skip file", 61.2}, {"COPYING", 600}};
  const std::string too_wide(60, 'x');
  struct Case {
    const char* name;
    progress_state state;
    const char* look;
    std::string shown = "";  // the label's text before this layout
  };
  const Case cases[] = {
      {"bar and buttons, half done", State(3, kTwoLines, {"Stop", "Skip file"}, 0.5),
       "label 20,20,490,34 | 1 340,74,81,22 | 0 442,74,67,22 | bar 20,74,300,20 500/1000 | 114 | "
       "Backup"},
      {"buttons centred without a bar", State(1, kTwoLines, {"Stop", "Skip file"}),
       "label 20,20,490,34 | 1 179,74,81,22 | 0 281,74,67,22 | bar- 20,74,139,20 0/1000 | 114 | "
       "Backup"},
      // The label keeps its text when the message changes in letter case only, and its height
      // is that of the text it keeps; any other text is taken.
      {"label keeps its letter case", State(1, "Copying"),
       "label 20,20,490,34 | bar- 20,74,245,20 0/1000 | 114 | Backup", "COPYING"},
      {"every flag, truncated", State(7, kTwoLines, {"Stop"}, 0.9999),
       "label 20,20,490,34 | 0 442,74,67,22 | bar 20,74,402,20 999/1000 | 114 | Backup | hidden"},
      {"no style, busy", State(std::nullopt, "Copying", {}, -1e300),
       "label- 20,0,490,0 | bar- 20,20,245,20 busy | 60 | Copying"},
      {"bar alone and an unknown flag, past the end", State(10, "Copying", {}, 1.5),
       "label- 20,0,490,0 | bar 20,20,490,20 1500/1000 | 60 | Copying"},
      {"past the range of the scale", State(2, "Copying", {}, 1e300),
       "label- 20,0,490,0 | bar 20,20,490,20 9223372036854775807/1000 | 60 | Copying"},
      {"empty captions and a fifth entry", State(2, "Copying", {"", "", "", "d", "e"}),
       "label- 20,0,490,0 | 3 360,20,30,22 | 2 410,20,20,22 | 1 450,20,20,22 | 0 490,20,20,22 | "
       "bar 20,20,320,20 0/1000 | 60 | Copying"},
      {"too wide for the row", State(2, "Copying", {too_wide}),
       "label- 20,0,490,0 | 0 -110,20,620,22 | bar 20,20,-150,20 0/1000 | 60 | Copying"},
  };
  for (const auto& c : cases) {  // in a window 530 wide
    const auto r = progress_layout::compute(c.state, 530, measurer, {{}, {}, c.shown});
    EXPECT_EQ(Look(r), c.look) << c.name;
  }
}

}  // namespace
