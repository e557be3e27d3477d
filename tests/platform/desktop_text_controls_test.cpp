// The text field and the text area: a written text reads back byte for byte, the user's edits
// replace it with exactly what was typed, and there is no length limit.

#include "platform/desktop_text_controls.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QtTest/QTest>
#include <functional>
#include <memory>

#include "platform/desktop_window.h"

namespace {

using platform::DesktopTextControl;
using platform::DesktopWindow;

struct Kind {
  const char* name;
  std::function<std::unique_ptr<DesktopTextControl>(DesktopWindow&)> make;
  std::function<void(QWidget*)> cursor_to_end;
};

const Kind kKinds[] = {
    {"field", [](DesktopWindow& w) { return std::make_unique<platform::DesktopTextField>(w); },
     [](QWidget* q) { static_cast<QLineEdit*>(q)->end(false); }},
    {"area", [](DesktopWindow& w) { return std::make_unique<platform::DesktopTextArea>(w); },
     [](QWidget* q) { static_cast<QPlainTextEdit*>(q)->moveCursor(QTextCursor::End); }},
};

TEST(DesktopTextControlsTest, KeepWhatWasWrittenAndFollowWhatTheUserTypes) {
  for (const Kind& kind : kKinds) {
    DesktopWindow window(DesktopWindow::Type::Document);
    auto control = kind.make(window);
    QWidget* widget = control->Widget();
    window.Show();

    // Bytes that are no UTF-8, a CR LF pair and quotes come back as they went in.
    const std::string written("caf\xC3\xA9 \xFF\r\n\"x\"");
    control->Text(written);
    EXPECT_EQ(control->Text(), written) << kind.name;
    EXPECT_EQ(control->Writes().Of(platform::Property::Text), 1) << kind.name;

    // Typed text comes back as typed, a no-break space included.
    control->Text("ab");
    kind.cursor_to_end(widget);
    QTest::keyClicks(widget, QString::fromUtf8("c\xC2\xA0"
                                               "d"));
    EXPECT_EQ(control->Text(),
              "abc\xC2\xA0"
              "d")
        << kind.name;

    // No limit: a text far longer than a default field holds takes one more typed character.
    control->Text(std::string(40000, 'x'));
    kind.cursor_to_end(widget);
    QTest::keyClick(widget, Qt::Key_Y);
    EXPECT_EQ(control->Text(), std::string(40000, 'x') + "y") << kind.name;
  }
}

}  // namespace
