#pragma once
// wProgress: the progress window. A small floating window that shows a title, a message, a
// progress bar and up to four buttons for the application that drives the helper. It keeps a
// stack of states and always shows the top one; commands change the top state or push a new
// one, a button press answers through the window's forwarder and pops a pushed state. After
// every change the whole window is laid out afresh from the top state (reformat), writing only
// the properties that differ. Main thread only; every operation runs to its end and none waits,
// except a press, which blocks while its reply is written.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/desktop_controls.h"
#include "platform/desktop_window.h"
#include "platform/dictionary.h"
#include "platform/text_measurer.h"
#include "progress/button_record.h"
#include "progress/progress_helpers.h"
#include "progress/progress_state.h"
#include "server/commandable.h"
#include "server/message_forwarder.h"

class wProgress : public platform::DesktopWindow, public commandable {
 public:
  static constexpr std::int64_t kButtons = 4;

  // Makes the window for `id` with one state, applies the keys of `init` (the whole "create"
  // command; nil counts as empty) to it, lays it out and opens the window, on the screen unless
  // the style says hidden. The server calls Show next, which shows it in any case. Replies go to
  // `forwarder`, held for the life of the window. `measurer` nil: the real font metrics. Never
  // throws for what `init` holds: a key that can't be converted is skipped with one line on
  // stderr.
  wProgress(std::string id, std::shared_ptr<platform::Dictionary> init,
            std::shared_ptr<message_forwarder> forwarder,
            std::shared_ptr<platform::TextMeasurer> measurer = nullptr);
  ~wProgress() override;

  // One command for this window, by the word in "cmd" (letter case ignored): "set" applies the
  // keys to the top state; "push" puts a new empty state on top and applies them there (a
  // screen reader hears of its title, message and buttons; the window doesn't take the focus);
  // "delete" closes the window and reads no other key. Any other word, or none, is ignored.
  // Keys: "title", "style", "message", "progress", "btn_spec", applied in that order; an absent
  // key leaves its field as it was; one that can't be converted is skipped with one line on
  // stderr, and the rest apply and the layout runs.
  void cmd(std::shared_ptr<platform::Dictionary> d) override;

  // The handler of all four buttons' Pressed event (through the event guard). Sends
  // {"obj_id":"<id>","cmd":"pressed","btn_id":"<entry id>"} for the top state's entry of that
  // button, unescaped, and blocks until the forwarder has written it; then, if more than one
  // state is on the stack, drops the top one and lays out the one below. If the write throws,
  // the exception passes on and the stack stays as it was. A press of a button that isn't on
  // the screen (a hidden slot, a hidden or closed window) does nothing: no reply, no pop.
  void btn_Pressed(platform::DesktopButton& sender);

  // Lays the whole window out from the top state (progress_layout::compute) and applies the
  // result: title, hiding, message, label, buttons, bar, height, showing, in that order. Every
  // write is guarded by a read; the window is never moved. Then sets what a screen reader and
  // the keyboard meet: the message, the bar (named after the message where it shows, else the
  // title bar's text) and the visible buttons from left to right; the cancel key presses the
  // leftmost. Never fails.
  void reformat();

  // The states; the last one is shown. Never empty, and element 0 is never removed.
  std::vector<std::shared_ptr<progress_state>> stack;

  // The top state and its fields, read afresh on every call. style() may be empty.
  progress_state& state() const { return *stack.back(); }
  const std::string& msg() const { return state().msg; }
  double progress() const { return state().progress; }
  const std::optional<progress_helpers::prog_style>& style() const { return state().style; }
  const std::string& title_() const { return state().title; }

  // The six controls, made once with the window and never added or removed.
  platform::DesktopProgressBar& ProgressBar1() const { return *ProgressBar1_; }
  platform::DesktopLabel& Label1() const { return *Label1_; }
  // Button 0 to 3; throws OutOfBoundsException for any other index.
  platform::DesktopButton& btn(std::int64_t index) const;
  std::array<platform::DesktopButton*, kButtons> btns() const;

 private:
  // The window's design properties and its controls in their first places.
  void Layout();
  void CreateControls();
  void update(const platform::Dictionary& d);
  // Four entries, one per button, with `index` set: the top state's own first four, then dummies.
  std::vector<std::shared_ptr<button_spec>> btn_specs() const;
  // The top state's entry for one button, or the dummy of that index. Writes nothing.
  std::shared_ptr<button_spec> btn_specs(std::int64_t index) const;
  // One line on stderr about a part of a command that was skipped.
  void report_skipped(std::string_view what, std::string_view why) const;

  std::string obj_id;
  std::shared_ptr<message_forwarder> response_callback;
  std::shared_ptr<platform::TextMeasurer> measurer_;
  std::unique_ptr<platform::DesktopProgressBar> ProgressBar1_;
  std::unique_ptr<platform::DesktopLabel> Label1_;
  std::array<std::unique_ptr<platform::DesktopButton>, kButtons> btn_;
};
