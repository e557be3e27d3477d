#include "platform/desktop_menu.h"

#include <utility>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeySequence>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QStringList>
#include <QTextDocument>

#include "platform/event_guard.h"
#include "platform/exceptions.h"
#include "platform/run_loop.h"
#include "platform/text.h"

namespace platform {

namespace {

enum class Standard { None, Quit, Undo, Cut, Copy, Paste, Clear, SelectAll };

Standard StandardOf(const std::string& name) {
  static const std::pair<const char*, Standard> kNames[] = {
      {"FileQuit", Standard::Quit},
      {"EditUndo", Standard::Undo},
      {"EditCut", Standard::Cut},
      {"EditCopy", Standard::Copy},
      {"EditPaste", Standard::Paste},
      {"EditClear", Standard::Clear},
      {"EditSelectAll", Standard::SelectAll},
  };
  for (const auto& [text, standard] : kNames) {
    if (EqualsPlain(name, text)) return standard;
  }
  return Standard::None;
}

// What the Edit actions need of a text control, for both kinds.
bool HasSelection(const QLineEdit& e) {
  return e.hasSelectedText();
}
bool HasSelection(const QPlainTextEdit& e) {
  return e.textCursor().hasSelection();
}
bool CanUndo(const QLineEdit& e) {
  return e.isUndoAvailable();
}
bool CanUndo(const QPlainTextEdit& e) {
  return e.document()->isUndoAvailable();
}
bool IsEmpty(const QLineEdit& e) {
  return e.text().isEmpty();
}
bool IsEmpty(const QPlainTextEdit& e) {
  return e.document()->isEmpty();
}
void DeleteSelection(QLineEdit& e) {
  // With nothing selected del() would take the next character: Delete only takes a selection.
  if (e.hasSelectedText()) e.del();
}
void DeleteSelection(QPlainTextEdit& e) {
  e.textCursor().removeSelectedText();
}

template <class Editor>
bool AppliesTo(Standard action, const Editor& e) {
  const bool editable = !e.isReadOnly();
  switch (action) {
    case Standard::Undo:
      return editable && CanUndo(e);
    case Standard::Cut:
    case Standard::Clear:
      return editable && HasSelection(e);
    case Standard::Copy:
      return HasSelection(e);
    case Standard::Paste:
      return editable && !QApplication::clipboard()->text().isEmpty();
    case Standard::SelectAll:
      return !IsEmpty(e);
    default:
      return true;
  }
}

template <class Editor>
void PerformOn(Standard action, Editor& e) {
  if (e.isReadOnly() && action != Standard::Copy && action != Standard::SelectAll) return;
  switch (action) {
    case Standard::Undo:
      e.undo();
      break;
    case Standard::Cut:
      e.cut();
      break;
    case Standard::Copy:
      e.copy();
      break;
    case Standard::Paste:
      e.paste();
      break;
    case Standard::Clear:
      DeleteSelection(e);
      break;
    case Standard::SelectAll:
      e.selectAll();
      break;
    default:
      break;
  }
}

// Calls `use` with the text control that has the keyboard focus; false when none has it.
template <class Use>
bool WithFocusedText(Use use) {
  QWidget* focus = QApplication::focusWidget();
  if (auto* line = qobject_cast<QLineEdit*>(focus)) return use(*line), true;
  if (auto* area = qobject_cast<QPlainTextEdit*>(focus)) return use(*area), true;
  return false;
}

QString ModifierName(std::string_view modifier) {
  if (EqualsPlain(modifier, "Cmd") || EqualsPlain(modifier, "Command")) return "Ctrl";
#ifdef __APPLE__
  // Qt's "Ctrl" is the Command key on macOS; the Control key is its "Meta".
  if (EqualsPlain(modifier, "Ctrl") || EqualsPlain(modifier, "Control")) return "Meta";
#endif
  if (EqualsPlain(modifier, "Option")) return "Alt";
  return QString::fromUtf8(modifier.data(), std::ssize(modifier));
}

}  // namespace

void DesktopMenuItem::AddMenu(std::shared_ptr<DesktopMenuItem> item) {
  if (!item) throw NilObjectException("DesktopMenuItem.AddMenu: nil item");
  items_.push_back(std::move(item));
}

std::shared_ptr<DesktopMenuItem> DesktopMenuItem::Child(std::string_view name) const {
  for (const auto& item : items_) {
    if (EqualsPlain(item->Name(), name)) return item;
  }
  return nullptr;
}

std::shared_ptr<DesktopMenuItem> DesktopMenuItem::MenuAt(std::int64_t index) const {
  if (index < 0 || index >= Count()) {
    throw OutOfBoundsException("Menu " + name_ + " has no item " + std::to_string(index));
  }
  return items_[static_cast<std::size_t>(index)];
}

void DesktopMenuItem::Perform() const {
  const Standard action = StandardOf(name_);
  if (action == Standard::None) return;
  if (action == Standard::Quit) {
    Quit(0);
    return;
  }
  WithFocusedText([action](auto& editor) { PerformOn(action, editor); });
}

bool DesktopMenuItem::Applies() const {
  const Standard action = StandardOf(name_);
  if (action == Standard::None || action == Standard::Quit) return true;
  bool applies = false;
  WithFocusedText([&](auto& editor) { applies = AppliesTo(action, editor); });
  return applies;
}

void DesktopMenuItem::Apply(QAction& action) const {
  action.setVisible(visible_);
  if (IsSeparator()) {
    action.setSeparator(true);
    return;
  }
  action.setText(QString::fromUtf8(text_.data(), std::ssize(text_)));
  action.setShortcut(ShortcutKeys(shortcut_));
  // On macOS Qt moves the quit item into the application menu; no other item moves.
  action.setMenuRole(StandardOf(name_) == Standard::Quit ? QAction::QuitRole : QAction::NoRole);
}

// Makes the Qt menus for the items and ties each action to the item it shows.
struct MenuBuilder {
  static QAction* Show(const std::shared_ptr<DesktopMenuItem>& item, QAction* action) {
    item->Apply(*action);
    return action;
  }

  static void Fill(const DesktopMenuItem& of, QMenu* menu) {
    std::vector<std::pair<std::shared_ptr<DesktopMenuItem>, QAction*>> shown;
    for (const auto& item : of.items_) {
      if (item->IsSeparator()) {
        Show(item, menu->addSeparator());
      } else if (!item->items_.empty()) {
        auto* submenu = new QMenu(menu);
        Fill(*item, submenu);
        Show(item, menu->addMenu(submenu));
      } else {
        auto* action = new QAction(menu);
        QObject::connect(action, &QAction::triggered,
                         [item] { GuardEvent([&item] { item->Perform(); }); });
        menu->addAction(action);
        shown.emplace_back(item, Show(item, action));
      }
    }
    // Auto-enabled items are enabled as the menu opens when their action applies; once it
    // closes they are all enabled again, so that a key chooses them wherever the focus goes.
    QObject::connect(menu, &QMenu::aboutToShow, [shown] {
      for (const auto& [item, action] : shown) {
        if (item->AutoEnabled()) action->setEnabled(item->Applies());
      }
    });
    QObject::connect(menu, &QMenu::aboutToHide, [shown] {
      for (const auto& [item, action] : shown) action->setEnabled(true);
    });
  }

  static QMenuBar* Bar(const DesktopMenuBar& bar, QWidget* parent) {
    auto* widget = new QMenuBar(parent);
    for (const auto& item : bar.items_) {
      auto* menu = new QMenu(widget);
      Fill(*item, menu);
      Show(item, widget->addMenu(menu));
    }
    return widget;
  }
};

QMenuBar* MakeMenuBar(const std::shared_ptr<DesktopMenuBar>& bar, QWidget* parent) {
  if (!bar) throw NilObjectException("MakeMenuBar: nil menu bar");
  return MenuBuilder::Bar(*bar, parent);
}

QKeySequence ShortcutKeys(std::string_view shortcut) {
  if (shortcut.empty()) return {};
  QStringList parts;
  for (;;) {
    const auto plus = shortcut.find('+');
    // The key is what follows the last modifier; it may be "+" itself.
    if (plus == std::string_view::npos || plus + 1 == shortcut.size()) break;
    parts << ModifierName(shortcut.substr(0, plus));
    shortcut.remove_prefix(plus + 1);
  }
  parts << QString::fromUtf8(shortcut.data(), std::ssize(shortcut));
  return QKeySequence::fromString(parts.join('+'), QKeySequence::PortableText);
}

}  // namespace platform
