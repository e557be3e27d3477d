#include "platform/event_guard.h"

#include <cstdio>
#include <exception>
#include <string>

namespace platform {

namespace {
void Report(const char* what) noexcept {
  // One line, whatever the message holds.
  std::string line = "qem_util: ";
  for (const char* p = what; *p; ++p) line.push_back(*p == '\n' ? ' ' : *p);
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}
}  // namespace

void GuardEvent(const std::function<void()>& event) noexcept {
  try {
    event();
  } catch (const std::exception& error) {
    Report(error.what());
  } catch (...) {
    Report("unknown exception");
  }
}

}  // namespace platform
