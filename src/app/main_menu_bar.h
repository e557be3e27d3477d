#pragma once
// MainMenuBar: the one menu bar of the process, in both modes: File with Quit, Edit with Undo,
// Cut, Copy, Paste, Delete and Select All, and an empty Help menu. No item has a handler here:
// each does what the platform's standard action of its name does (see DesktopMenuItem).

#include <memory>

#include "platform/desktop_menu.h"

class MainMenuBar : public platform::DesktopMenuBar {
 public:
  // Builds the three menus.
  MainMenuBar();

 private:
  void FileMenu();
  void EditMenu();
  void HelpMenu();
  // Adds a top-level menu.
  void AddTopMenu(const char* name, const char* text);
  // Adds an item to the menu of that name; a separator's shortcut is left unset.
  void AddItem(const char* menu, const char* name, const char* text, const char* shortcut);
};

// The shared instance, made on the first call and kept for the life of the process. It holds
// no Qt object, so it may outlive the application object.
std::shared_ptr<MainMenuBar> main_menu_bar();
