#pragma once
// What the progress window tests share: a measurer with known sizes in place of a font's, a
// forwarder that keeps its replies, commands written as JSON, and write counts summed over a
// window and its six controls.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/text_measurer.h"
#include "progress/wprogress.h"
#include "server/message_forwarder.h"

namespace qem_test {

// Heights of messages and widths of captions from tables; a text not in them measures 17 high
// and 10 per byte wide.
class TableMeasurer : public platform::TextMeasurer {
 public:
  std::map<std::string, double> heights;
  std::map<std::string, double> widths;
  double StringHeight(const std::string& text, const std::string&, double, double) override;
  double StringWidth(const std::string& text, const std::string&, double) override;
};

class RecordingForwarder : public message_forwarder {
 public:
  void write(const std::string& message) override { replies.push_back(message); }
  std::vector<std::string> replies;
};

// The command as the JSON reader makes it.
std::shared_ptr<platform::Dictionary> Command(const std::string& json);

// A window for "w1" made from `create_json` with the given measurer and forwarder.
std::unique_ptr<wProgress> MakeWindow(
    const std::string& create_json, std::shared_ptr<platform::TextMeasurer> measurer,
    std::shared_ptr<message_forwarder> forwarder = std::make_shared<RecordingForwarder>());

// Writes to the window and its controls since the last reset, and the reset.
long TotalWrites(const wProgress& window);
void ResetWrites(wProgress& window);

// Presses button `index` as the user would, with the mouse.
void Press(wProgress& window, int index);

}  // namespace qem_test
