#include "flock_probe.h"

#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <utility>

namespace {
std::function<void()>& Hook() {
  static std::function<void()> hook;
  return hook;
}
int calls = 0;
int last_result = 0;
}  // namespace

namespace qem_test {

void BeforeNextFlock(std::function<void()> hook) {
  Hook() = std::move(hook);
}
int FlockCalls() {
  return calls;
}
int LastFlockResult() {
  return last_result;
}

}  // namespace qem_test

// Takes the place of the C library's flock for everything linked into this binary.
extern "C" int flock(int fd, int operation) {
  ++calls;
  if (Hook()) {
    auto hook = std::move(Hook());
    Hook() = nullptr;
    hook();
  }
  last_result = static_cast<int>(::syscall(SYS_flock, fd, operation));
  return last_result;
}
