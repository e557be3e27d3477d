// The text field and the text area: a written text reads back byte for byte, the user's edits
// replace it with exactly what was typed, and the field has no length limit.

#include "platform/desktop_text_controls.h"

#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QtTest/QTest>

#include "platform/desktop_window.h"

namespace {

TEST(DesktopTextControlsTest, KeepWhatWasWrittenAndFollowWhatTheUserTypes) {
  platform::DesktopWindow window(platform::DesktopWindow::Type::Document);
  platform::DesktopTextField field(window);
  platform::DesktopTextArea area(window);
  window.Show();
  // Bytes that are no UTF-8, a CR LF pair and quotes come back as they went in.
  const std::string written("caf\xC3\xA9 \xFF\r\n\"x\"");
  area.Text(written);
  EXPECT_EQ(area.Text(), written);

  // Typed text comes back as typed, a no-break space included. Writing puts the field's cursor
  // at the end, not the area's.
  const std::string typed = "c\xC2\xA0" + std::string("d");
  field.Text("ab");
  area.Text("ab");
  static_cast<QPlainTextEdit*>(area.Widget())->moveCursor(QTextCursor::End);
  platform::DesktopTextControl* const controls[] = {&field, &area};
  for (auto* control : controls) {
    QTest::keyClicks(control->Widget(), QString::fromStdString(typed));
    EXPECT_EQ(control->Text(), "ab" + typed);
  }

  // A text far longer than Qt's field would hold takes one more typed character.
  field.Text(std::string(40000, 'x'));
  QTest::keyClick(field.Widget(), Qt::Key_Y);
  EXPECT_EQ(field.Text(), std::string(40000, 'x') + "y");
}

}  // namespace
