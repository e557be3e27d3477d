#pragma once
// The user's documents folder, as the desktop reports it. GUI-side: it needs Qt.

#include "platform/folder_item.h"

namespace platform::SpecialFolder {

// The documents folder from QStandardPaths; the home folder when the desktop names none.
FolderItem Documents();

}  // namespace platform::SpecialFolder
