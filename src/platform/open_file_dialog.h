#pragma once
// The choice of one existing file by the user, in the platform's file dialog.

#include <functional>
#include <optional>
#include <string>

#include "platform/folder_item.h"

namespace platform {

class DesktopWindow;

class OpenFileDialog {
 public:
  // The captions of the two buttons; empty: the platform's own.
  std::string ActionButtonCaption;
  std::string CancelButtonCaption;
  // The file name the dialog selects at first, in InitialFolder; empty: none.
  std::string SuggestedFileName;
  // The dialog's window title.
  std::string Title;
  // A line that says what to choose. Kept for the caller; Qt's dialog has no place to show it.
  std::string PromptText;
  // The folder shown at first; an empty path: the platform's choice.
  FolderItem InitialFolder;

  // Shows the dialog over `owner` (nil: on its own) and blocks until the user chooses: the
  // chosen file, or nothing on cancel. The dialog runs a modal loop of its own, so window and
  // timer events are delivered while it is open. Main thread only.
  std::optional<FolderItem> ShowModal(const DesktopWindow* owner = nullptr) const;

  // For tests: while an answer is set, ShowModal shows nothing and gives what the answer gives
  // for the dialog. An empty function ends that.
  using Answer = std::function<std::optional<FolderItem>(const OpenFileDialog&)>;
  static void AnswerForTests(Answer answer);
};

}  // namespace platform
