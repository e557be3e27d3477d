// The layout of a progress window, worked out afresh from the top state after every change.

#include "platform/text.h"
#include "progress/set_rect.h"
#include "progress/wprogress.h"

namespace {

using progress_helpers::prog_style;
using progress_helpers::set_rect;
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

double wProgress::text_height(const std::string& text, const std::string& font, double size,
                              double width) const {
  return measurer_->StringHeight(text, font, size, width);
}

double wProgress::text_width(const std::string& text, const std::string& font, double size) const {
  return measurer_->StringWidth(text, font, size);
}

void wProgress::reformat() {
  const prog_style style = this->style().value_or(prog_style::none());
  platform::DesktopLabel& label = Label1();
  platform::DesktopProgressBar& bar = ProgressBar1();

  // Title; letter case alone is no change.
  if (!platform::EqualsPlain(Title(), title_())) Title(title_());

  // Hiding comes first, so that a window never shows a half-made look.
  if (style.Contains(prog_style::hidden()) && Visible()) Visible(false);

  // Message text.
  if (!platform::EqualsPlain(label.Text(), msg())) label.Text(msg());

  // The label above the row, as high as its text; or none, and the message in the title bar.
  if (style.Contains(prog_style::has_message())) {
    const std::int64_t h =
        truncate(text_height(label.Text(), label.FontName(), static_cast<double>(label.FontSize()),
                             static_cast<double>(label.Width())));
    set_rect(label, kMargin, kMargin, Width() - kLabelSides, h);
    if (!label.Visible()) label.Visible(true);
  } else {
    set_rect(label, kMargin, 0, Width() - kLabelSides, 0);
    if (label.Visible()) label.Visible(false);
    if (!platform::EqualsPlain(Title(), msg())) Title(msg());
  }

  // Button widths, and the width of the whole row of visible buttons.
  std::int64_t total = 0;
  for (const auto& entry : btn_specs()) {
    if (entry->visible) {
      const platform::DesktopButton& b = btn(entry->index);
      entry->width =
          text_width(entry->text, b.FontName(), static_cast<double>(b.FontSize())) + kButtonExtra;
      if (total > 0) total += kButtonGap;
      total = truncate(entry->width + static_cast<double>(total));
    } else {
      entry->width = 0.0;
    }
  }

  // The row's top, and its right edge: at the margin beside a bar, else centred.
  const std::int64_t row = label.Top() + label.Height() + kGap;
  const bool has_progress = style.Contains(prog_style::has_progress());
  std::int64_t x =
      has_progress ? Width() - kMargin : truncate(static_cast<double>(Width() + total) / 2.0);

  // Buttons from right to left, the first entry rightmost.
  for (const auto& entry : btn_specs()) {
    platform::DesktopButton& b = btn(entry->index);
    if (entry->visible) {
      x = truncate(static_cast<double>(x) - entry->width);
      set_rect(b, x, row, truncate(entry->width), kButtonHeight);
      // A caption's letter case counts.
      if (b.Caption() != entry->text) b.Caption(entry->text);
      if (!b.Enabled()) b.Enabled(true);
      if (!b.Visible()) b.Visible(true);
      x -= kButtonGap;
    } else if (b.Visible()) {
      b.Visible(false);
    }
  }

  // The bar's state; a negative progress is indeterminate, anything else is a fraction of
  // the scale, not clamped.
  if (bar.Visible() != has_progress) bar.Visible(has_progress);
  if (progress() < 0.0) {
    if (!bar.Indeterminate()) bar.Indeterminate(true);
  } else {
    if (bar.Indeterminate()) bar.Indeterminate(false);
    if (bar.MaximumValue() != kBarScale) bar.MaximumValue(kBarScale);
    const std::int64_t v = truncate(static_cast<double>(bar.MaximumValue()) * progress());
    if (bar.Value() != static_cast<double>(v)) bar.Value(static_cast<double>(v));
  }

  // The bar fills the row up to the leftmost button; its row is kept even when it is hidden.
  set_rect(bar, kMargin, row, x - kMargin, kBarHeight);

  // The window's height follows the row.
  const std::int64_t height = bar.Top() + bar.Height() + kGap;
  if (Height() != height) Height(height);

  // Showing comes last, so that the window appears with its final look.
  if (!style.Contains(prog_style::hidden()) && !Visible()) Visible(true);
}
