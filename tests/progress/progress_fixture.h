#pragma once
// Shared by the progress window tests: a forwarder that keeps its replies, commands written as
// JSON, write counts over a window and its controls, what a user sees of it.

#include <memory>
#include <string>
#include <vector>

#include "json/tree_dictionary.h"
#include "platform/exceptions.h"
#include "progress/wprogress.h"
#include "table_measurer.h"

namespace qem_test {

// Keeps each reply; once `fail` is set, throws as a reply channel that is gone.
class RecordingForwarder : public message_forwarder {
 public:
  void write(const std::string& message) override {
    if (fail) throw platform::IOException("reply channel gone");
    replies.push_back(message);
  }
  std::vector<std::string> replies;
  bool fail = false;
};

inline std::shared_ptr<platform::Dictionary> Command(const std::string& json) {
  return JSON::JSONStringToTreeDictionary(json);
}

// Window "w1", shown, as the server makes it; a nil measurer means real fonts.
inline std::unique_ptr<wProgress> MakeWindow(
    const std::string& create_json, std::shared_ptr<platform::TextMeasurer> measurer,
    std::shared_ptr<message_forwarder> forwarder = std::make_shared<RecordingForwarder>()) {
  auto w = std::make_unique<wProgress>("w1", Command(create_json), std::move(forwarder),
                                       std::move(measurer));
  w->Show();
  return w;
}

// The writes to the window and its controls since the last call; counting starts afresh.
inline long TakeWrites(wProgress& w) {
  const auto take = [](auto& counted) {
    const long writes = counted.Writes().Total();
    counted.ResetWrites();
    return writes;
  };
  long total = take(w) + take(w.ProgressBar1()) + take(w.Label1());
  for (auto* b : w.btns()) total += take(*b);
  return total;
}

// What a user sees of a window, enough to tell one state from another.
inline std::string LookOf(const wProgress& w) {
  std::string look = w.Title() + "|" + (w.Label1().Visible() ? w.Label1().Text() : "") + "|" +
                     std::to_string(w.ProgressBar1().Visible()) + "|" +
                     std::to_string(w.ProgressBar1().Value()) + "|" + std::to_string(w.Height());
  for (const auto* b : w.btns()) look += b->Visible() ? "|" + b->Caption() : "";
  return look;
}

}  // namespace qem_test
