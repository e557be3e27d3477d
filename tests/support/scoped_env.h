#pragma once
// An environment variable set, or removed, for the life of an object; child processes started
// meanwhile see the change.

#include <stdlib.h>

#include <cstdlib>
#include <string>

namespace qem_test {

// Sets an environment variable (or removes it, for nullptr) for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) saved_ = old, had_ = true;
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~ScopedEnv() { had_ ? ::setenv(name_, saved_.c_str(), 1) : ::unsetenv(name_); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
  std::string saved_;
  bool had_ = false;
};

}  // namespace qem_test
