#pragma once
// Everything one state of a progress window shows. A window keeps a stack of them and shows the
// top one; a state owns its entries and its style.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "progress/button_record.h"
#include "progress/progress_helpers.h"

class progress_state {
 public:
  std::vector<std::shared_ptr<button_spec>> btn_specs;  // the buttons, first one first
  std::string msg;                                      // the message text
  double progress = 0.0;                                // 0 to 1; negative: indeterminate
  std::optional<progress_helpers::prog_style> style;    // none until a "style" key sets one
  std::string title;                                    // the window title
};
