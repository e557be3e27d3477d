#pragma once
// What a test sees of other processes from outside, as the starting application would: locks
// held or waited for, how often a process was woken, what lies in a folder; and commands put in
// a channel as that application puts them.

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qem_test {

// True when somebody holds the lock `name` of the temporary folder: our own attempt fails.
bool LockHeld(const std::string& name);

// True while process `pid` waits to take the flock of `file`, as the kernel lists it in
// /proc/locks; always false where there is no such list.
bool WaitsForLock(pid_t pid, const std::filesystem::path& file);

// How often the threads of a process have gone to sleep and were woken since they began: their
// voluntary context switches. nullopt without /proc.
std::optional<long> Wakeups(pid_t pid);

// The names of what lies in a folder, sorted.
std::vector<std::string> Listing(const std::filesystem::path& folder);

// Writes the messages to `channel` in one stay inside it, in their order.
void Send(const std::string& channel, const std::vector<std::string>& messages);

}  // namespace qem_test
