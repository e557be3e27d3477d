// The program's menu bar on the console does what the platform's standard actions do: the Edit
// items act on the focused text field, and Quit by its key ends the run with status 0.

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QtTest/QTest>
#include <stdexcept>
#include <string>

#include "console/console_fixture.h"

namespace {

using MenuBar = qem_test::ConsoleTest;

TEST_F(MenuBar, ItsItemsDoWhatTheStandardActionsDo) {
#ifdef __APPLE__
  GTEST_SKIP() << "the screen's menu bar shows it";
#endif
  console->Frame()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(console->Frame()));
  auto* bar = console->Frame()->findChild<QMenuBar*>();
  ASSERT_NE(bar, nullptr);
  QMenu* edit = bar->actions().at(1)->menu();
  const auto item = [edit](const char* text) -> QAction& {
    for (QAction* action : edit->actions()) {
      if (action->text() == text) return *action;
    }
    throw std::runtime_error(std::string("no Edit item ") + text);
  };
  auto* channel = static_cast<QLineEdit*>(console->tfchannel().Widget());
  channel->setFocus();
  QTest::keyClicks(channel, "cmd.one");
  // Nothing selected: Copy is greyed while the menu is open, and only then, and Delete takes
  // no character.
  Q_EMIT edit->aboutToShow();
  EXPECT_FALSE(item("&Copy").isEnabled());
  Q_EMIT edit->aboutToHide();
  EXPECT_TRUE(item("&Copy").isEnabled());
  item("&Delete").trigger();
  EXPECT_EQ(console->tfchannel().Text(), "cmd.one");

  item("Select &All").trigger();
  EXPECT_EQ(channel->selectedText(), "cmd.one");
  item("&Copy").trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "cmd.one");
  console->tfpath().Widget()->setFocus();
  item("&Paste").trigger();
  EXPECT_EQ(console->tfpath().Text(), "cmd.one");

  QTest::keyClick(console->Frame(), Qt::Key_Q, Qt::ControlModifier);
  EXPECT_TRUE(platform::QuitRequested());
  EXPECT_EQ(platform::DesktopApplication::Instance()->Run(), 0);
}

}  // namespace
