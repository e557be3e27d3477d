#pragma once
// Memory that the process has freed, handed back to the system.

namespace platform {

// Gives the pages that freed memory leaves unused back to the system, where the allocator would
// keep them for later (glibc keeps what a burst of small allocations used, spread among pages
// still in use). Elsewhere the allocator returns memory on its own, and this does nothing.
// Costs a walk over the heap: call it after much was freed, not after each free. Never fails.
void ReturnFreedMemory() noexcept;

}  // namespace platform
