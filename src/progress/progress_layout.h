#pragma once
// The layout of a progress window as a pure function: from the state on top of its stack, the
// window's width and a text measurer to the title, where the label, the buttons and the bar go,
// which of them show, and the window's height. No window, no control and no Qt: the window's
// look can be known without a display (where to click a button, the order in which buttons are
// read out), and wProgress::reformat applies it to the controls with guarded writes.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/text_measurer.h"
#include "progress/progress_state.h"

namespace progress_layout {

// The window's button slots. Slot i shows the state's entry i; entries past the last slot are
// never shown.
constexpr std::size_t kSlots = 4;

// A control's place and size in points, in the window's client area.
struct rect {
  std::int64_t left = 0, top = 0, width = 0, height = 0;
  friend bool operator==(const rect&, const rect&) = default;
};

// A font as a control gives it; "System" and size 0 mean the application's default font.
struct font {
  std::string name = "System";
  float size = 0;
};

// What the window shows before this layout, as far as the layout depends on it: the fonts that
// text is measured in, and the label's text. The defaults are those of a new window.
struct shown {
  font label_font;
  std::array<font, kSlots> button_fonts;
  std::string label_text;
};

struct button {
  bool visible = false;  // the slot has an entry to show
  rect place;            // where it stands; all 0 for a hidden slot, which stays where it was
  double width = 0.0;    // the caption's measured width plus the room around it; 0 when hidden
  std::string caption;   // the entry's text; "" when hidden
};

struct result {
  std::string title;      // the state's title, which the title bar takes first
  std::string title_bar;  // what the title bar ends with: the title, or the message without label
  bool hidden = false;    // the window stays off the screen
  std::string message;    // the label's text
  rect label;
  bool label_visible = false;
  std::array<button, kSlots> buttons;  // by slot
  std::vector<std::size_t> on_screen;  // the visible slots as they stand, left to right
  rect bar;                            // its row is kept when it is hidden
  bool bar_visible = false;
  bool indeterminate = false;    // a busy bar; bar_value means nothing then
  std::int64_t bar_maximum = 0;  // the bar's scale
  std::int64_t bar_value = 0;    // the progress on that scale, truncated and not clamped
  std::int64_t height = 0;       // of the window's client area; its width stays as it is
};

// Lays out `state` in a window `window_width` points wide, measuring text with `measurer` in the
// fonts of `now`. A state without a style is laid out as style none. The label shows the message
// as `now.label_text` has it when the two differ in letter case only, and is as high as that
// text wrapped at the label's width. Buttons stand right to left from the first entry, at the
// right margin beside a bar, else centred; nothing is clamped, so captions too wide for the row
// run off to the left and the bar's width can drop to 0 or below. Never fails; calls only the
// measurer.
result compute(const progress_state& state, std::int64_t window_width,
               platform::TextMeasurer& measurer, const shown& now = {});

}  // namespace progress_layout
