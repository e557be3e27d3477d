#pragma once
// The JSON reader's one entry for the rest of the system: text in, nested dictionaries out.

#include <memory>
#include <string>

#include "platform/dictionary.h"

namespace JSON {

// Reads `json` and gives the dictionary of its top object, never nil. Values are String (escapes
// resolved), Double (every number; a bare word that is no number gives 0), Boolean, nil, nested
// Dictionary or array; keys are the unescaped names, compared without regard to ASCII case, the
// later of two equal keys winning. The reader is loose: a text that is no object, or is broken,
// gives an empty or partial dictionary and no error. The caller owns the result; no tree is left
// behind: the result is what JSONExtract(json).as_variant() gives when that is a Dictionary, but
// the values are made directly by the same scan, without a node for each. Runs in time linear in
// the text and does not block.
// Throws platform::RuntimeException("JSON nested too deeply") when containers nest deeper than
// 512 levels; otherwise only running out of memory is reported.
std::shared_ptr<platform::Dictionary> JSONStringToTreeDictionary(const std::string& json);

}  // namespace JSON
