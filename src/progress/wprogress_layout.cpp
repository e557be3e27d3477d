// The layout of a progress window, applied afresh from the top state after every change.

#include "platform/text.h"
#include "progress/progress_layout.h"
#include "progress/set_rect.h"
#include "progress/wprogress.h"

static_assert(progress_layout::kSlots == wProgress::kButtons, "one button per layout slot");

namespace {

progress_layout::font FontOf(const platform::DesktopUIControl& control) {
  return {control.FontName(), control.FontSize()};
}

void Place(platform::DesktopUIControl& control, const progress_layout::rect& r) {
  progress_helpers::set_rect(control, r.left, r.top, r.width, r.height);
}

}  // namespace

void wProgress::reformat() {
  platform::DesktopLabel& label = Label1();
  platform::DesktopProgressBar& bar = ProgressBar1();
  progress_layout::shown now;
  now.label_font = FontOf(label);
  for (std::size_t i = 0; i < progress_layout::kSlots; ++i) now.button_fonts[i] = FontOf(*btn_[i]);
  now.label_text = label.Text();
  const progress_layout::result r = progress_layout::compute(state(), Width(), *measurer_, now);

  // The records keep the widths worked out for them.
  const auto entries = btn_specs();
  for (std::size_t i = 0; i < entries.size(); ++i) entries[i]->width = r.buttons[i].width;

  // Every write below is guarded by a read. Title; letter case alone is no change.
  if (!platform::EqualsPlain(Title(), r.title)) Title(r.title);

  // Hiding comes first, so that a window never shows a half-made look.
  if (r.hidden && Visible()) Visible(false);

  // Message text.
  if (!platform::EqualsPlain(label.Text(), r.message)) label.Text(r.message);

  // The label; without it, the title bar takes the message.
  Place(label, r.label);
  if (label.Visible() != r.label_visible) label.Visible(r.label_visible);
  if (!r.label_visible && !platform::EqualsPlain(Title(), r.title_bar)) Title(r.title_bar);

  // Buttons in slot order; a hidden one keeps its place and caption.
  for (std::size_t i = 0; i < progress_layout::kSlots; ++i) {
    const progress_layout::button& slot = r.buttons[i];
    platform::DesktopButton& b = *btn_[i];
    if (slot.visible) {
      Place(b, slot.place);
      // A caption's letter case counts.
      if (b.Caption() != slot.caption) b.Caption(slot.caption);
      if (!b.Enabled()) b.Enabled(true);
      if (!b.Visible()) b.Visible(true);
    } else if (b.Visible()) {
      b.Visible(false);
    }
  }

  // The bar's state: a busy bar keeps its scale and value.
  if (bar.Visible() != r.bar_visible) bar.Visible(r.bar_visible);
  if (r.indeterminate) {
    if (!bar.Indeterminate()) bar.Indeterminate(true);
  } else {
    if (bar.Indeterminate()) bar.Indeterminate(false);
    if (bar.MaximumValue() != r.bar_maximum) bar.MaximumValue(r.bar_maximum);
    const auto value = static_cast<double>(r.bar_value);
    if (bar.Value() != value) bar.Value(value);
  }

  // The bar's place, and the window's height.
  Place(bar, r.bar);
  if (Height() != r.height) Height(r.height);

  // Showing comes last, so that the window appears with its final look.
  if (!r.hidden && !Visible()) Visible(true);

  // What a screen reader and the keyboard meet, in the order it stands on the screen: the
  // message above, then the row from left to right. The bar is named after the window's text.
  bar.AccessibleName(r.label_visible ? r.message : r.title_bar);
  std::vector<const platform::DesktopUIControl*> order = {&label, &bar};
  for (std::size_t slot : r.on_screen) order.push_back(btn_[slot].get());
  ControlOrder(order);
}
