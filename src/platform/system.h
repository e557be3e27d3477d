#pragma once
// What the process knows about itself: its id, its command line and its executable's name.

#include <cstdint>
#include <string>

namespace platform {

// The id of the running process.
std::int32_t my_process_id();

}  // namespace platform

namespace platform::System {

// Records the program's arguments; main calls this once before anything reads the command line.
void SetArguments(int argc, const char* const* argv);

// The program's arguments joined with single blanks, program path first. Before SetArguments
// it is empty.
const std::string& CommandLine();

// The full path of the running executable file, or "" when it can't be found.
std::string ExecutablePath();

// The name of the running executable file (its last path component).
std::string ExecutableName();

}  // namespace platform::System
