#include "app/main_menu_bar.h"

#include <string>

MainMenuBar::MainMenuBar() {
  FileMenu();
  EditMenu();
  HelpMenu();
}

void MainMenuBar::FileMenu() {
  AddTopMenu("FileMenu", "&File");
  AddItem("FileMenu", "FileQuit", "&Quit", "Cmd+Q");
}

void MainMenuBar::EditMenu() {
  AddTopMenu("EditMenu", "&Edit");
  AddItem("EditMenu", "EditUndo", "&Undo", "Cmd+Z");
  AddItem("EditMenu", "EditSeparator1", "-", nullptr);
  AddItem("EditMenu", "EditCut", "Cu&t", "Cmd+X");
  AddItem("EditMenu", "EditCopy", "&Copy", "Cmd+C");
  AddItem("EditMenu", "EditPaste", "&Paste", "Cmd+V");
  AddItem("EditMenu", "EditClear", "&Delete", "");
  AddItem("EditMenu", "EditSeparator2", "-", nullptr);
  AddItem("EditMenu", "EditSelectAll", "Select &All", "Cmd+A");
}

void MainMenuBar::HelpMenu() {
  AddTopMenu("HelpMenu", "&Help");
}

void MainMenuBar::AddTopMenu(const char* name, const char* text) {
  auto menu = std::make_shared<platform::DesktopMenuItem>();
  menu->Name(name);
  menu->AutoEnabled(true);
  menu->Text(text);
  menu->Visible(true);
  menu->Shortcut("");
  AddMenu(std::move(menu));
}

void MainMenuBar::AddItem(const char* menu, const char* name, const char* text,
                          const char* shortcut) {
  auto item = std::make_shared<platform::DesktopMenuItem>();
  item->Name(name);
  item->AutoEnabled(true);
  item->Text(text);
  item->Visible(true);
  if (shortcut) item->Shortcut(shortcut);
  Child(menu)->AddMenu(std::move(item));
}

std::shared_ptr<MainMenuBar> main_menu_bar() {
  static const auto shared = std::make_shared<MainMenuBar>();
  return shared;
}
