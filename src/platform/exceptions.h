#pragma once
// The exceptions the system raises for real faults. Every one derives from platform::Exception,
// so the event guard can catch them all in one place; bad content is never reported this way.

#include <stdexcept>
#include <string>

namespace platform {

class Exception : public std::runtime_error {
 public:
  explicit Exception(const std::string& message, int error_number = 0)
      : std::runtime_error(message), error_number_(error_number) {}
  // The operating system's error code behind the fault, or 0 when there is none.
  int ErrorNumber() const { return error_number_; }

 private:
  int error_number_;
};

#define QEM_PLATFORM_EXCEPTION(name)                                        \
  class name : public Exception {                                           \
   public:                                                                  \
    explicit name(const std::string& message = #name, int error_number = 0) \
        : Exception(message, error_number) {}                               \
  };

QEM_PLATFORM_EXCEPTION(NilObjectException)
QEM_PLATFORM_EXCEPTION(IOException)
QEM_PLATFORM_EXCEPTION(RuntimeException)
QEM_PLATFORM_EXCEPTION(UnsupportedFormatException)
QEM_PLATFORM_EXCEPTION(FunctionNotFoundException)
QEM_PLATFORM_EXCEPTION(TypeMismatchException)
QEM_PLATFORM_EXCEPTION(KeyNotFoundException)
QEM_PLATFORM_EXCEPTION(OutOfBoundsException)

#undef QEM_PLATFORM_EXCEPTION

}  // namespace platform
