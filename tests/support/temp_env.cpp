#include "support/temp_env.h"

#include <stdlib.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qem_test {

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  const char* old = std::getenv(name);
  had_ = old != nullptr;
  if (old) saved_ = old;
  if (value) {
    ::setenv(name, value, 1);
  } else {
    ::unsetenv(name);
  }
}

ScopedEnv::~ScopedEnv() {
  if (had_) {
    ::setenv(name_.c_str(), saved_.c_str(), 1);
  } else {
    ::unsetenv(name_.c_str());
  }
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return "<missing>";
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

void WriteFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

}  // namespace qem_test
