#pragma once
// Starting another program.

#include <string>

#include "platform/folder_item.h"

namespace platform {

// Starts the program `program` with `parameters` split at every single blank into its arguments
// (no quoting; an empty line gives none), so that the program's command line reads exactly
// "<path> <parameters>". The program runs on its own, detached: it inherits this process's
// environment, folder and standard streams, and outlives it. Never waits for it. Throws
// IOException naming the path when the item is no file that can be run or can't be started.
void OpenProgram(const FolderItem& program, const std::string& parameters);

}  // namespace platform
