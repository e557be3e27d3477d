// The window and control wrappers: a read gives what was written even where Qt shows something
// else, a floating window stays put, text is measured as it is drawn.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetricsF>
#include <QLabel>
#include <QProgressBar>
#include <QWindow>

#include "platform/desktop_controls.h"
#include "platform/desktop_window.h"
#include "platform/font_metrics_measurer.h"

namespace {

using platform::DesktopWindow;

TEST(DesktopWindowTest, FloatsOnTopWithoutButtonsKeepsWhatWasWrittenAndNeverMoves) {
  DesktopWindow window(DesktopWindow::Type::FloatingGlobal);
  const Qt::WindowFlags shown = Qt::Tool | Qt::WindowStaysOnTopHint | Qt::CustomizeWindowHint |
                                Qt::WindowTitleHint,
                        buttons = Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint |
                                  Qt::WindowMaximizeButtonHint;
  EXPECT_EQ(window.Widget()->windowFlags() & (shown | buttons), shown);
  // A height under the minimum reads back as written.
  window.Resizeable(false);
  window.MinimumHeight(64);
  window.Width(530);
  window.Height(60);
  window.Title("Copy [*] 50%");
  window.Show();
  EXPECT_EQ(window.Height(), 60);
  EXPECT_EQ(window.Widget()->minimumSize(), window.Widget()->maximumSize());
  EXPECT_EQ(window.Widget()->windowHandle()->title(), "Copy [*] 50%");
  const QPoint place = window.Widget()->pos();
  window.Height(300);
  EXPECT_EQ(window.Widget()->height(), 300);
  EXPECT_EQ(window.Widget()->pos(), place);
  // Only its owner closes it, not a window manager's close box; once closed it stays closed.
  EXPECT_FALSE(window.Widget()->close());
  window.Close();
  window.Show();
  EXPECT_FALSE(window.Widget()->isVisible());
}

TEST(DesktopControlsTest, BarKeepsValuesOutsideItsRangeAndIsBusyWhenIndeterminate) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopProgressBar bar(window);
  const auto* qt_bar = static_cast<QProgressBar*>(bar.Widget());
  bar.MaximumValue(1000);
  bar.Value(1500);
  EXPECT_EQ(bar.Value(), 1500);
  EXPECT_EQ(qt_bar->value(), 1000);
  bar.Indeterminate(true);
  EXPECT_EQ(qt_bar->maximum(), 0);
  bar.Value(-3);
  bar.Indeterminate(false);
  EXPECT_EQ(bar.Value(), -3);
  EXPECT_EQ(qt_bar->maximum(), 1000);
  EXPECT_EQ(qt_bar->value(), 0);
  bar.Width(-5);
  EXPECT_EQ(bar.Width(), -5);
}

TEST(TextMeasurerTest, MeasuresAsTheControlsDraw) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopLabel label(window);
  const std::string text = "A message long enough to wrap onto several lines in a narrow label.";
  label.Multiline(true);
  label.Text(text);
  const auto measurer = platform::FontMetricsMeasurer();
  EXPECT_EQ(measurer->StringHeight(text, "System", 0, 80),
            static_cast<QLabel*>(label.Widget())->heightForWidth(80));
  EXPECT_DOUBLE_EQ(measurer->StringWidth("Cancel", "system", 0),
                   QFontMetricsF(QApplication::font()).horizontalAdvance("Cancel"));
  EXPECT_GT(measurer->StringWidth("Cancel", "System", 40),
            measurer->StringWidth("Cancel", "System", 8));
}

}  // namespace
