// libFuzzer entry over the JSON reader: any input must end normally or in the depth exception,
// and the tree must be the one the plain level-by-level scan gives.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "json/json_extract.h"
#include "json/tree_dictionary.h"
#include "naive_tree.h"
#include "platform/exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    JSON::JSONStringToTreeDictionary(text);
    JSONExtract tree(text);
    if (!qem_test::CompareWithNaive(tree).empty()) std::abort();
  } catch (const platform::RuntimeException& e) {
    if (std::strcmp(e.what(), "JSON nested too deeply") != 0) std::abort();
  }
  return 0;
}
