// The window and control wrappers: a read gives what was written even where Qt shows something
// else, every write is counted, presses go through the event guard, text is measured as the
// controls draw it.

#include <gtest/gtest.h>

#include <QApplication>
#include <QFontMetricsF>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QWindow>
#include <QtTest/QTest>
#include <stdexcept>

#include "platform/desktop_controls.h"
#include "platform/desktop_window.h"
#include "platform/text_measurer.h"

namespace {

using platform::DesktopWindow;
using platform::Property;

TEST(DesktopWindowTest, KeepsWhatWasWrittenWhereQtClampsIt) {
  DesktopWindow window(DesktopWindow::Type::FloatingGlobal);
  window.Resizeable(false);
  window.MinimumHeight(64);
  window.Width(530);
  window.Height(60);
  window.Show();
  EXPECT_EQ(window.Height(), 60);
  EXPECT_EQ(window.Widget()->height(), 64);
  EXPECT_EQ(window.Widget()->width(), 530);
  // Not resizeable: the user can't change the size.
  EXPECT_EQ(window.Widget()->minimumSize(), window.Widget()->maximumSize());
  const QPoint place = window.Widget()->pos();
  window.Height(300);
  EXPECT_EQ(window.Widget()->height(), 300);
  EXPECT_EQ(window.Widget()->pos(), place);
}

TEST(DesktopWindowTest, FloatsWithoutParentOrWindowButtons) {
  DesktopWindow window(DesktopWindow::Type::FloatingGlobal);
  const Qt::WindowFlags flags = window.Widget()->windowFlags();
  EXPECT_EQ(window.Widget()->parentWidget(), nullptr);
  EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
  EXPECT_TRUE(flags.testFlag(Qt::Tool));
  EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
  EXPECT_TRUE(flags.testFlag(Qt::CustomizeWindowHint));
  for (Qt::WindowType button :
       {Qt::WindowCloseButtonHint, Qt::WindowMinimizeButtonHint, Qt::WindowMaximizeButtonHint}) {
    EXPECT_FALSE(flags.testFlag(button)) << button;
  }
}

TEST(DesktopWindowTest, AFloatingWindowRefusesToBeClosedFromOutside) {
  DesktopWindow floating(DesktopWindow::Type::FloatingGlobal);
  DesktopWindow document(DesktopWindow::Type::Document);
  floating.Open();
  document.Open();
  EXPECT_FALSE(floating.Widget()->close());
  EXPECT_TRUE(floating.Widget()->isVisible());
  EXPECT_TRUE(document.Widget()->close());
}

TEST(DesktopWindowTest, ShowsOnlyOnceOpenAndNeverAfterClose) {
  DesktopWindow window(DesktopWindow::Type::FloatingGlobal);
  window.Title("Copy [*] 50%");
  EXPECT_TRUE(window.Visible());
  EXPECT_FALSE(window.Widget()->isVisible());
  window.Open();
  EXPECT_TRUE(window.Widget()->isVisible());
  // The title bar shows the text as written, markers and all.
  EXPECT_EQ(window.Widget()->windowHandle()->title(), "Copy [*] 50%");
  window.Close();
  window.Show();
  window.Visible(true);
  EXPECT_FALSE(window.Widget()->isVisible());
  EXPECT_TRUE(window.Closed());
}

TEST(DesktopControlsTest, BarKeepsValuesOutsideItsRangeAndIsBusyWhenIndeterminate) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopProgressBar bar(window);
  auto* qt_bar = static_cast<QProgressBar*>(bar.Widget());
  bar.MaximumValue(1000);
  bar.Value(1500);
  EXPECT_EQ(bar.Value(), 1500);
  EXPECT_EQ(qt_bar->value(), 1000);
  bar.Indeterminate(true);
  EXPECT_EQ(qt_bar->minimum(), 0);
  EXPECT_EQ(qt_bar->maximum(), 0);
  bar.Value(-3);
  bar.Indeterminate(false);
  EXPECT_EQ(bar.Value(), -3);
  EXPECT_EQ(qt_bar->maximum(), 1000);
  EXPECT_EQ(qt_bar->value(), 0);
}

TEST(DesktopControlsTest, EveryWriteCountsAlsoOfAnEqualValue) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopLabel label(window);
  label.Width(-5);
  EXPECT_EQ(label.Width(), -5);
  EXPECT_EQ(label.Widget()->width(), 0);
  label.ResetWrites();
  label.Text("a");
  label.Text("a");
  label.Left(1);
  EXPECT_EQ(label.Writes().Of(Property::Text), 2);
  EXPECT_EQ(label.Writes().Total(), 3);
  window.ResetWrites();
  window.Title("x");
  window.Visible(false);
  EXPECT_EQ(window.Writes().Total(), 2);
}

TEST(DesktopControlsTest, PressesRunThroughTheEventGuard) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopButton button(window, 2);
  button.Caption("Save & quit");
  window.Open();
  std::int64_t pressed_index = -1;
  button.AddPressedHandler([&](platform::DesktopButton& sender) {
    pressed_index = sender.Index();
    throw std::runtime_error("handler failed");
  });
  testing::internal::CaptureStderr();
  QTest::mouseClick(button.Widget(), Qt::LeftButton);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qem_util: handler failed\n");
  EXPECT_EQ(pressed_index, 2);
  EXPECT_EQ(button.Caption(), "Save & quit");
}

TEST(TextMeasurerTest, MeasuresAsTheControlsDraw) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopLabel label(window);
  const std::string text =
      "A message long enough to wrap onto several lines when the label is narrow enough.";
  label.Text(text);
  auto measurer = platform::FontMetricsMeasurer();
  auto* qt_label = static_cast<QLabel*>(label.Widget());
  for (double width : {490.0, 200.0, 80.0}) {
    EXPECT_EQ(measurer->StringHeight(text, "System", 0, width),
              qt_label->heightForWidth(static_cast<int>(width)))
        << width;
  }
  EXPECT_GT(measurer->StringHeight(text, "System", 0, 80),
            measurer->StringHeight(text, "System", 0, 490));
  const QFontMetricsF app(QApplication::font());
  EXPECT_DOUBLE_EQ(measurer->StringWidth("Cancel", "system", 0), app.horizontalAdvance("Cancel"));
  EXPECT_GT(measurer->StringWidth("Cancel", "System", 40),
            measurer->StringWidth("Cancel", "System", 8));
}

}  // namespace
