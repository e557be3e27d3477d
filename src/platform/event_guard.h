#pragma once
// The one guard through which every entry from the run loop into the system's code passes
// (start-up, timer tick, button press, window closing). An exception that leaves the system's
// code there is written as one line on stderr, "qem_util: " and what it says, and the process
// goes on running: no exception ever reaches the run loop.

#include <functional>

namespace platform {

// Runs `event` to its end. Catches every exception it throws and reports it; never throws.
void GuardEvent(const std::function<void()>& event) noexcept;

}  // namespace platform
