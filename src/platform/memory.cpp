#include "platform/memory.h"

// Any header of the C library tells which one it is.
#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace platform {

void ReturnFreedMemory() noexcept {
#if defined(__GLIBC__)
  ::malloc_trim(0);
#endif
}

}  // namespace platform
