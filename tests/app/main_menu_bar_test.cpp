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

#include "console/qem_util_test.h"
#include "platform/run_loop.h"
#include "progress/wprogress.h"
#include "support/temp_env.h"

namespace {

struct Row {
  std::string menu, name, text, shortcut;
  QKeySequence keys;
  bool operator==(const Row&) const = default;
};

void PrintTo(const Row& r, std::ostream* os) {
  *os << r.menu << "/" << r.name << " \"" << r.text << "\" " << r.shortcut << " "
      << r.keys.toString().toStdString();
}

// In the order of the menus; a separator's shortcut is never set.
const std::vector<Row> kTable = {
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

class MenuBarTest : public qem_test::TempEnvTest {
 protected:
  void SetUp() override {
#ifdef __APPLE__
    GTEST_SKIP() << "the screen's menu bar shows it";
#endif
    TempEnvTest::SetUp();
    platform::DesktopApplication::Instance()->MenuBar(main_menu_bar());
    console = std::make_unique<qem_util_test>();
    console->Frame()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(console->Frame()));
    bar = console->Frame()->findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
  }
  void TearDown() override {
    console.reset();
    platform::DesktopApplication::Instance()->MenuBar(nullptr);
    TempEnvTest::TearDown();
  }
  // The item of the Edit menu with that text, as the console shows it.
  QAction* EditItem(const char* text) {
    for (QAction* action : bar->actions().at(1)->menu()->actions()) {
      if (action->text() == text) return action;
    }
    ADD_FAILURE() << "no item " << text;
    return nullptr;
  }

  std::unique_ptr<qem_util_test> console;
  QMenuBar* bar = nullptr;
};

TEST_F(MenuBarTest, HoldsTheTableAndTheConsoleShowsItAboveItsClientArea) {
  std::vector<Row> items, shown;
  const auto main = main_menu_bar();
  for (std::int64_t i = 0; i < main->Count(); ++i) {
    const auto menu = main->MenuAt(i);
    items.push_back({"", menu->Name(), menu->Text(), menu->Shortcut(), {}});
    for (std::int64_t j = 0; j < menu->Count(); ++j) {
      const auto item = menu->MenuAt(j);
      EXPECT_TRUE(item->AutoEnabled() && item->Visible()) << item->Name();
      items.push_back({menu->Name(), item->Name(), item->Text(), item->Shortcut(),
                       platform::ShortcutKeys(item->Shortcut())});
    }
  }
  EXPECT_EQ(items, kTable);

  // What the console shows: the same texts and keys, in the same order.
  for (QAction* top : bar->actions()) {
    shown.push_back({"", "", top->text().toStdString(), "", top->shortcut()});
    for (QAction* action : top->menu()->actions()) {
      const std::string text = action->isSeparator() ? "-" : action->text().toStdString();
      shown.push_back({"", "", text, "", action->shortcut()});
    }
  }
  ASSERT_EQ(shown.size(), kTable.size());
  for (std::size_t i = 0; i < shown.size(); ++i) {
    EXPECT_EQ(shown[i].text, kTable[i].text) << i;
    EXPECT_EQ(shown[i].keys, kTable[i].keys) << kTable[i].name;
  }
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
  console->tfchannel().Widget()->setFocus();
  QTest::keyClicks(console->tfchannel().Widget(), "cmd.one");
  EditItem("Select &All")->trigger();
  EXPECT_EQ(static_cast<QLineEdit*>(console->tfchannel().Widget())->selectedText(), "cmd.one");
  EditItem("&Copy")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "cmd.one");
  console->tfpath().Widget()->setFocus();
  EditItem("&Paste")->trigger();
  EXPECT_EQ(console->tfpath().Text(), "cmd.one");
  EXPECT_EQ(console->tfchannel().Text(), "cmd.one");
}

}  // namespace
