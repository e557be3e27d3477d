// libFuzzer entry over the JSON reader: any input must end normally or in the depth exception,
// the tree must be the one the plain level-by-level scan gives, and the dictionary the one the
// tree gives.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "naive_reader.h"
#include "platform/exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::size_t keys = 0;
  try {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!qem_test::DifferenceFromPlain(text, keys).empty()) std::abort();
  } catch (const platform::RuntimeException& e) {
    if (std::strcmp(e.what(), "JSON nested too deeply") != 0) std::abort();
  }
  return 0;
}
