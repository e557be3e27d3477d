// MainMenuBar: its table, as the console shows it above its client area; Quit by its key ends
// the run with status 0; the Edit items act on the focused text field.

#include "app/main_menu_bar.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QtTest/QTest>
#include <memory>
#include <string>
#include <vector>

#include "console/console_fixture.h"
#include "progress/wprogress.h"

namespace {

struct Row {
  const char* menu;
  const char* name;
  const char* text;
  const char* shortcut;
  QKeySequence keys;
};

// In the order of the menus; a separator's shortcut is never set.
const Row kTable[] = {
    {"", "FileMenu", "&File", "", {}},
    {"FileMenu", "FileQuit", "&Quit", "Cmd+Q", QKeySequence(Qt::CTRL | Qt::Key_Q)},
    {"", "EditMenu", "&Edit", "", {}},
    {"EditMenu", "EditUndo", "&Undo", "Cmd+Z", QKeySequence(Qt::CTRL | Qt::Key_Z)},
    {"EditMenu", "EditSeparator1", "-", "", {}},
    {"EditMenu", "EditCut", "Cu&t", "Cmd+X", QKeySequence(Qt::CTRL | Qt::Key_X)},
    {"EditMenu", "EditCopy", "&Copy", "Cmd+C", QKeySequence(Qt::CTRL | Qt::Key_C)},
    {"EditMenu", "EditPaste", "&Paste", "Cmd+V", QKeySequence(Qt::CTRL | Qt::Key_V)},
    {"EditMenu", "EditClear", "&Delete", "", {}},
    {"EditMenu", "EditSeparator2", "-", "", {}},
    {"EditMenu", "EditSelectAll", "Select &All", "Cmd+A", QKeySequence(Qt::CTRL | Qt::Key_A)},
    {"", "HelpMenu", "&Help", "", {}},
};

class NoReplies : public message_forwarder {
 public:
  void write(const std::string&) override {}
};

class MenuBarTest : public qem_test::ConsoleTest {
 protected:
  void SetUp() override {
#ifdef __APPLE__
    GTEST_SKIP() << "the screen's menu bar shows it";
#endif
    ConsoleTest::SetUp();
    console->Frame()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(console->Frame()));
    bar = console->Frame()->findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
  }
  // The item of the Edit menu with that text, as the console shows it.
  QAction* EditItem(const char* text) {
    for (QAction* action : bar->actions().at(1)->menu()->actions()) {
      if (action->text() == text) return action;
    }
    ADD_FAILURE() << "no item " << text;
    return nullptr;
  }
  QMenuBar* bar = nullptr;
};

TEST_F(MenuBarTest, HoldsTheTableAndTheConsoleShowsItAboveItsClientArea) {
  // The items as the bar holds them and as the console shows them, side by side, in order.
  std::size_t k = 0;
  const auto check = [&](const std::string& menu, const platform::DesktopMenuItem& item,
                         const QAction* shown) {
    ASSERT_LT(k, std::size(kTable));
    const Row& row = kTable[k++];
    EXPECT_EQ(menu, row.menu) << row.name;
    EXPECT_EQ(item.Name(), row.name);
    EXPECT_EQ(item.Text(), row.text) << row.name;
    EXPECT_EQ(item.Shortcut(), row.shortcut) << row.name;
    EXPECT_TRUE(item.AutoEnabled() && item.Visible()) << row.name;
    EXPECT_EQ(shown->isSeparator() ? "-" : shown->text().toStdString(), row.text) << row.name;
    EXPECT_EQ(shown->shortcut(), row.keys) << row.name;
  };
  const auto main = main_menu_bar();
  ASSERT_EQ(main->Count(), bar->actions().size());
  for (std::int64_t i = 0; i < main->Count(); ++i) {
    const auto menu = main->MenuAt(i);
    QMenu* shown = bar->actions().at(i)->menu();
    check("", *menu, shown->menuAction());
    ASSERT_EQ(menu->Count(), shown->actions().size()) << menu->Name();
    for (std::int64_t j = 0; j < menu->Count(); ++j) {
      check(menu->Name(), *menu->MenuAt(j), shown->actions().at(j));
    }
  }
  EXPECT_EQ(k, std::size(kTable));
  EXPECT_EQ(console->Widget()->geometry(), QRect(0, bar->height(), 600, 400));
  // Progress windows float without one.
  wProgress progress("p1", nullptr, std::make_shared<NoReplies>());
  EXPECT_EQ(progress.Frame()->findChild<QMenuBar*>(), nullptr);
}

TEST_F(MenuBarTest, QuitByItsKeyEndsTheRunWithStatusZero) {
  ASSERT_FALSE(platform::QuitRequested());
  QTest::keyClick(console->Frame(), Qt::Key_Q, Qt::ControlModifier);
  EXPECT_TRUE(platform::QuitRequested());
  EXPECT_EQ(platform::DesktopApplication::Instance()->Run(), 0);
}

TEST_F(MenuBarTest, EditItemsActOnTheFocusedTextField) {
  QLineEdit* channel = static_cast<QLineEdit*>(console->tfchannel().Widget());
  channel->setFocus();
  QTest::keyClicks(channel, "cmd.one");
  // Nothing selected: Copy is greyed while the menu is open, and only then, and Delete takes
  // no character.
  QMenu* edit = bar->actions().at(1)->menu();
  Q_EMIT edit->aboutToShow();
  EXPECT_FALSE(EditItem("&Copy")->isEnabled());
  Q_EMIT edit->aboutToHide();
  EXPECT_TRUE(EditItem("&Copy")->isEnabled());
  EditItem("&Delete")->trigger();
  EXPECT_EQ(console->tfchannel().Text(), "cmd.one");

  EditItem("Select &All")->trigger();
  EXPECT_EQ(channel->selectedText(), "cmd.one");
  EditItem("&Copy")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "cmd.one");
  console->tfpath().Widget()->setFocus();
  EditItem("&Paste")->trigger();
  EXPECT_EQ(console->tfpath().Text(), "cmd.one");
}

}  // namespace
