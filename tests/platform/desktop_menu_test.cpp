// Menus: shortcuts in the platform's keys, the standard Edit actions on the focused text
// control, and the document windows that carry the application's bar with its items greyed
// while they don't apply.

#include "platform/desktop_menu.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QtTest/QTest>

#include "platform/desktop_controls.h"
#include "platform/desktop_text_controls.h"
#include "platform/desktop_window.h"
#include "platform/run_loop.h"

namespace {

using platform::DesktopMenuItem;
using platform::DesktopWindow;

std::shared_ptr<DesktopMenuItem> Item(const char* name, const char* text = "x",
                                      const char* shortcut = "") {
  auto item = std::make_shared<DesktopMenuItem>();
  item->Name(name);
  item->Text(text);
  item->Shortcut(shortcut);
  return item;
}

void Activate(DesktopWindow& window) {
  window.Show();
  window.Frame()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.Frame()));
}

TEST(DesktopMenuTest, ShortcutsUseThePlatformsCommandKey) {
  const struct {
    const char* text;
    QKeySequence keys;
  } cases[] = {
      {"", QKeySequence()},
      {"Cmd+Q", QKeySequence(Qt::CTRL | Qt::Key_Q)},  // Qt's Ctrl is Command on macOS
      {"Shift+Cmd+Z", QKeySequence(Qt::SHIFT | Qt::CTRL | Qt::Key_Z)},
      {"Option+F4", QKeySequence(Qt::ALT | Qt::Key_F4)},
      {"command++", QKeySequence(Qt::CTRL | Qt::Key_Plus)},
#ifdef __APPLE__
      {"Ctrl+K", QKeySequence(Qt::META | Qt::Key_K)},
#else
      {"Ctrl+K", QKeySequence(Qt::CTRL | Qt::Key_K)},
#endif
  };
  for (const auto& c : cases) EXPECT_EQ(platform::ShortcutKeys(c.text), c.keys) << c.text;
}

TEST(DesktopMenuTest, EditActionsWorkOnTheFocusedTextControlAndNowhereElse) {
  DesktopWindow window(DesktopWindow::Type::Document);
  platform::DesktopTextArea area(window);
  platform::DesktopButton button(window);
  Activate(window);
  auto select_all = Item("EditSelectAll"), cut = Item("EditCut"), undo = Item("EditUndo");
  auto paste = Item("EditPaste"), clear = Item("EditClear"), plain = Item("MyOwnItem");
  area.Text("hello world");
  area.Widget()->setFocus();
  // Delete takes a selection, never the character after the cursor.
  EXPECT_FALSE(clear->Applies());
  clear->Perform();
  EXPECT_EQ(area.Text(), "hello world");
  select_all->Perform();
  cut->Perform();
  EXPECT_EQ(area.Text(), "");
  EXPECT_EQ(QApplication::clipboard()->text(), "hello world");
  ASSERT_TRUE(undo->Applies());
  undo->Perform();
  EXPECT_EQ(area.Text(), "hello world");
  static_cast<QPlainTextEdit*>(area.Widget())->moveCursor(QTextCursor::End);
  paste->Perform();
  EXPECT_EQ(area.Text(), "hello worldhello world");
  // With the focus on a button the Edit items do nothing; an item of no standard name applies.
  button.Widget()->setFocus();
  EXPECT_FALSE(paste->Applies());
  paste->Perform();
  EXPECT_EQ(area.Text(), "hello worldhello world");
  EXPECT_TRUE(plain->Applies());
}

TEST(DesktopMenuTest, DocumentWindowsCarryTheBarAboveTheClientAreaWithItemsThatFollowTheFocus) {
#ifdef __APPLE__
  GTEST_SKIP() << "the screen's menu bar shows it";
#endif
  auto bar = std::make_shared<platform::DesktopMenuBar>();
  auto edit = Item("EditMenu", "&Edit");
  auto copy = Item("EditCopy", "&Copy", "Cmd+C");
  edit->AddMenu(copy);
  bar->AddMenu(edit);
  auto* application = platform::DesktopApplication::Instance();
  application->MenuBar(bar);
  DesktopWindow document(DesktopWindow::Type::Document);
  DesktopWindow floating(DesktopWindow::Type::FloatingGlobal);
  application->MenuBar(nullptr);
  EXPECT_EQ(floating.MenuBar(), nullptr);
  EXPECT_EQ(floating.Frame()->findChild<QMenuBar*>(), nullptr);
  ASSERT_EQ(document.MenuBar(), bar);
  auto* qt_bar = document.Frame()->findChild<QMenuBar*>();
  ASSERT_NE(qt_bar, nullptr);

  document.Width(300);
  document.Height(200);
  platform::DesktopTextField field(document);
  Activate(document);
  EXPECT_EQ(document.Widget()->geometry(), QRect(0, qt_bar->height(), 300, 200));
  EXPECT_EQ(document.Frame()->size(), QSize(300, 200 + qt_bar->height()));

  QMenu* menu = qt_bar->actions().at(0)->menu();
  QAction* action = menu->actions().at(0);
  EXPECT_EQ(action->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_C));
  // Nothing to copy in an empty field: greyed while the menu is open, and only then.
  field.Widget()->setFocus();
  Q_EMIT menu->aboutToShow();
  EXPECT_FALSE(action->isEnabled());
  Q_EMIT menu->aboutToHide();
  EXPECT_TRUE(action->isEnabled());
  // Later changes reach the item on the screen.
  copy->Text("Copy &All");
  copy->Visible(false);
  EXPECT_EQ(action->text(), "Copy &All");
  EXPECT_FALSE(action->isVisible());
}

}  // namespace
