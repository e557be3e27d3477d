#pragma once
// Menus: a menu bar, its menus and their items, as plain values that keep what was written to
// them. Qt's menus are made from them for each window (or for the screen on macOS) that shows
// the bar, as the bar is at that moment: build the bar whole before it is shown.
//
// The program gives no item a handler. Items whose Name is one of the standard names do what
// the platform's standard actions do: "FileQuit" calls Quit(0); "EditUndo", "EditCut",
// "EditCopy", "EditPaste", "EditClear" (delete the selection) and "EditSelectAll" act on the
// text control that has the keyboard focus, and do nothing when none has it. Main thread only.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QAction;
class QKeySequence;
class QMenuBar;
class QWidget;

namespace platform {

class DesktopMenuItem {
 public:
  DesktopMenuItem() = default;
  virtual ~DesktopMenuItem() = default;
  DesktopMenuItem(const DesktopMenuItem&) = delete;
  DesktopMenuItem& operator=(const DesktopMenuItem&) = delete;

  // The name the item is found by, and which picks its standard action.
  const std::string& Name() const noexcept { return name_; }
  void Name(std::string value) { name_ = std::move(value); }
  // The text shown; "&" marks the access key that follows it ("&&" shows an ampersand). A
  // text of "-" makes the item a separator.
  const std::string& Text() const noexcept { return text_; }
  void Text(std::string value) { text_ = std::move(value); }
  // The key that chooses the item, as "Cmd+Q": modifiers joined by "+" before the key. "Cmd" is
  // the platform's command modifier (Ctrl, or Command on macOS), "Ctrl" the Control key, "Alt" or
  // "Option", and "Shift". Empty: none.
  const std::string& Shortcut() const noexcept { return shortcut_; }
  void Shortcut(std::string value) { shortcut_ = std::move(value); }
  // True: whenever its menu opens, the item is enabled only if its standard action applies
  // there (Copy needs a selection, Paste text on the clipboard and an editable control, ...).
  // Its key works in any case and does nothing where the action doesn't apply.
  bool AutoEnabled() const noexcept { return auto_enabled_; }
  void AutoEnabled(bool value) { auto_enabled_ = value; }
  bool Visible() const noexcept { return visible_; }
  void Visible(bool value) { visible_ = value; }

  bool IsSeparator() const { return text_ == "-"; }

  // Adds `item` at the end of this menu.
  void AddMenu(std::shared_ptr<DesktopMenuItem> item);
  // The item of this menu (not of its submenus) with that Name, ignoring ASCII case; nil if none.
  std::shared_ptr<DesktopMenuItem> Child(std::string_view name) const;
  // The items of this menu in order. MenuAt throws OutOfBoundsException for a bad index.
  std::int64_t Count() const noexcept { return static_cast<std::int64_t>(items_.size()); }
  std::shared_ptr<DesktopMenuItem> MenuAt(std::int64_t index) const;

  // Carries out the standard action of this item's Name, if it has one. Never throws.
  void Perform() const;
  // Whether the standard action would do something now; true for an item without one.
  bool Applies() const;

 private:
  friend struct MenuBuilder;
  void Apply(QAction& action) const;

  std::string name_;
  std::string text_;
  std::string shortcut_;
  bool auto_enabled_ = true;
  bool visible_ = true;
  std::vector<std::shared_ptr<DesktopMenuItem>> items_;
};

// The bar: a menu whose items are the menus shown along it.
class DesktopMenuBar : public DesktopMenuItem {};

// A Qt menu bar for `bar` inside `parent` (nil: the screen's menu bar on macOS), with a menu for
// each of its items. The widget belongs to `parent`, or to the caller when there is none.
QMenuBar* MakeMenuBar(const std::shared_ptr<DesktopMenuBar>& bar, QWidget* parent);

// The key sequence of a Shortcut text (see DesktopMenuItem::Shortcut); empty for "".
QKeySequence ShortcutKeys(std::string_view shortcut);

}  // namespace platform
