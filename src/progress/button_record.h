#pragma once
// One button of a progress window as the caller asked for it, and the stand-ins for buttons
// that a state doesn't describe.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/dictionary.h"

class button_spec {
 public:
  std::string id;          // what the reply names when this button is pressed
  std::int64_t index = 0;  // which of the window's four buttons shows this entry
  std::string text;        // the caption
  bool visible = false;    // true for every entry that came from a command
  double width = 0.0;      // worked out by each layout

  // The invisible entry with empty id and text that stands in for button `index` (0 or more).
  // One process-wide list, grown on demand and never shrunk: the same index gives the same
  // object for the life of the process, and its `width` is overwritten by every layout.
  static std::shared_ptr<button_spec> dummy(std::int64_t index);

  // A visible entry from a command's object: "id" and "text" in their string form, "" when
  // absent; no other key is read. Throws TypeMismatchException when one of the two is a
  // container.
  static std::shared_ptr<button_spec> from_dictionary(const platform::Dictionary& d);

  // Called with the position of an element that gave no entry.
  using skip_handler = std::function<void(std::size_t position)>;
  // One entry per element, in order; nil gives an empty list. An element that is no object, or
  // whose "id" or "text" can't be converted, gives no entry: `skipped` hears of it and the rest
  // go on.
  static std::vector<std::shared_ptr<button_spec>> from_dictionary_array(
      const std::shared_ptr<platform::ObjectArray>& a, const skip_handler& skipped = {});
};
