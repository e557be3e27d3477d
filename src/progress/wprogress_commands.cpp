// The commands a progress window takes, and its buttons' replies.

#include <cstdio>
#include <functional>

#include "platform/exceptions.h"
#include "platform/text.h"
#include "progress/wprogress.h"

void wProgress::update(const platform::Dictionary& d) {
  progress_state& s = state();
  using value = const platform::Variant&;
  // Applies one key when the command has it. A value that can't be converted leaves its field
  // as it was and is reported; the other keys and the layout go on.
  const auto key = [&](std::string_view name, const std::function<void(value)>& apply) {
    if (!d.HasKey(name)) return;
    try {
      apply(d.Value(name));
    } catch (const platform::Exception& error) {
      report_skipped("key \"" + std::string(name) + "\"", error.what());
    }
  };
  key("title", [&](value v) { s.title = v.StringValue(); });
  key("style", [&](value v) {
    auto style = progress_helpers::prog_style::none();
    style = v.Int64Value();
    s.style = style;
  });
  key("message", [&](value v) { s.msg = v.StringValue(); });
  key("progress", [&](value v) { s.progress = v.DoubleValue(); });
  key("btn_spec", [&](value v) {
    s.btn_specs = button_spec::from_dictionary_array(v.ArrayValue(), [this](std::size_t i) {
      report_skipped("element " + std::to_string(i) + " of \"btn_spec\"",
                     "no object with text values");
    });
  });
  reformat();
}

void wProgress::cmd(std::shared_ptr<platform::Dictionary> d) {
  if (!d) return;
  std::string word;
  try {
    word = d->Lookup("cmd", "").StringValue();
  } catch (const platform::Exception&) {
    return;  // a word that is no text is no command of ours
  }
  if (platform::EqualsPlain(word, "delete")) {
    Close();
  } else if (platform::EqualsPlain(word, "set")) {
    update(*d);
  } else if (platform::EqualsPlain(word, "push")) {
    stack.push_back(std::make_shared<progress_state>());
    update(*d);
  }
}

void wProgress::btn_Pressed(platform::DesktopButton& sender) {
  // Only a button the user can see answers. The slots without an entry stay in the window for
  // the layout, hidden yet enabled, and an accessibility client can still reach them; so can it
  // reach the buttons of a window that is off the screen.
  if (Closed() || !Visible() || !sender.Visible()) return;
  const std::shared_ptr<button_spec> entry = btn_specs(sender.Index());
  if (!response_callback) throw platform::NilObjectException("wProgress has no forwarder");
  response_callback->write("{\"obj_id\":\"" + obj_id + "\",\"cmd\":\"pressed\",\"btn_id\":\"" +
                           entry->id + "\"}");
  if (stack.size() > 1) {
    stack.pop_back();
    reformat();
  }
}

void wProgress::report_skipped(std::string_view what, std::string_view why) const {
  std::string line = "qem_util: wProgress \"" + obj_id + "\": " + std::string(what) +
                     " skipped: " + std::string(why);
  for (char& c : line) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  line.push_back('\n');
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}
