#include "progress/progress_layout.h"

#include <algorithm>

#include "platform/text.h"
#include "progress/progress_helpers.h"

namespace progress_layout {

namespace {

using progress_helpers::prog_style;
using progress_helpers::truncate;

constexpr std::int64_t kMargin = 20;      // beside the label and the bar, above the label
constexpr std::int64_t kLabelSides = 40;  // window width minus this is the label's width
constexpr std::int64_t kGap = 20;         // between label and row, below the row
constexpr std::int64_t kButtonGap = 20;   // between buttons, and between bar and buttons
constexpr double kButtonExtra = 20.0;     // added to a caption's measured width
constexpr std::int64_t kButtonHeight = 22;
constexpr std::int64_t kBarHeight = 20;
constexpr std::int64_t kBarScale = 1000;

}  // namespace

result compute(const progress_state& state, std::int64_t window_width,
               platform::TextMeasurer& measurer, const shown& now) {
  const prog_style style = state.style.value_or(prog_style::none());
  result r;
  r.title = state.title;
  r.hidden = style.Contains(prog_style::hidden());

  // The label is written only when its text differs other than in letter case, so it may keep
  // the text it has; that is the text it is measured with.
  r.message = platform::EqualsPlain(now.label_text, state.msg) ? now.label_text : state.msg;

  // The label above the row, as high as its text; or none, and the message in the title bar.
  r.label_visible = style.Contains(prog_style::has_message());
  const std::int64_t label_width = window_width - kLabelSides;
  if (r.label_visible) {
    const std::int64_t h = truncate(measurer.StringHeight(r.message, now.label_font.name,
                                                          static_cast<double>(now.label_font.size),
                                                          static_cast<double>(label_width)));
    r.label = {kMargin, kMargin, label_width, h};
    r.title_bar = state.title;
  } else {
    r.label = {kMargin, 0, label_width, 0};
    r.title_bar = state.msg;
  }

  // Button widths, and the width of the whole row of visible buttons.
  std::int64_t total = 0;
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    const button_spec* entry =
        slot < state.btn_specs.size() ? state.btn_specs[slot].get() : nullptr;
    if (entry == nullptr || !entry->visible) continue;
    button& b = r.buttons[slot];
    const font& f = now.button_fonts[slot];
    b.visible = true;
    b.caption = entry->text;
    b.width = measurer.StringWidth(entry->text, f.name, static_cast<double>(f.size)) + kButtonExtra;
    if (total > 0) total += kButtonGap;
    total = truncate(b.width + static_cast<double>(total));
  }

  // The row's top, and its right edge: at the margin beside a bar, else centred.
  const std::int64_t row = r.label.top + r.label.height + kGap;
  r.bar_visible = style.Contains(prog_style::has_progress());
  std::int64_t x = r.bar_visible ? window_width - kMargin
                                 : truncate(static_cast<double>(window_width + total) / 2.0);

  // Buttons from right to left, the first entry rightmost.
  for (button& b : r.buttons) {
    if (!b.visible) continue;
    x = truncate(static_cast<double>(x) - b.width);
    b.place = {x, row, truncate(b.width), kButtonHeight};
    x -= kButtonGap;
  }
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    if (r.buttons[slot].visible) r.on_screen.push_back(slot);
  }
  std::stable_sort(r.on_screen.begin(), r.on_screen.end(), [&](std::size_t a, std::size_t b) {
    return r.buttons[a].place.left < r.buttons[b].place.left;
  });

  // The bar; a negative progress is busy, anything else a fraction of the scale, not clamped.
  r.indeterminate = state.progress < 0.0;
  r.bar_maximum = kBarScale;
  if (!r.indeterminate) r.bar_value = truncate(static_cast<double>(kBarScale) * state.progress);

  // The bar fills the row up to the leftmost button; its row is kept even when it is hidden,
  // and the window's height follows the row.
  r.bar = {kMargin, row, x - kMargin, kBarHeight};
  r.height = r.bar.top + r.bar.height + kGap;
  return r;
}

}  // namespace progress_layout
