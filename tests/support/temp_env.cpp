#include "support/temp_env.h"

#include <fstream>
#include <sstream>

namespace qem_test {

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
