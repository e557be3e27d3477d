// libFuzzer entry over the JSON reader: any input must end normally or in the depth exception,
// the tokens must be the ones the plain byte-by-byte split gives, the tree the one the plain
// level-by-level scan gives, and the dictionary the one the tree gives.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "canonical_form.h"
#include "json/json_extract.h"
#include "json/tree_dictionary.h"
#include "naive_reader.h"
#include "platform/exceptions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  try {
    if (JSON::JSON_Split(std::make_shared<const std::string>(text)).tokens !=
        qem_test::NaiveSplit(text)) {
      std::abort();
    }
    auto result = JSON::JSONStringToTreeDictionary(text);
    JSONExtract tree(text);
    if (!qem_test::CompareWithNaive(tree).empty()) std::abort();
    // The direct reading must give exactly what the tree gives.
    platform::Variant from_tree = tree.as_variant();
    const std::string want =
        from_tree.IsDictionary() ? qem_json_dump::CanonicalForm(from_tree) : "{}";
    if (qem_json_dump::CanonicalForm(result) != want) std::abort();
  } catch (const platform::RuntimeException& e) {
    if (std::strcmp(e.what(), "JSON nested too deeply") != 0) std::abort();
  }
  return 0;
}
