// qem_progress_window: shows one progress window, made from a "create" command, on whatever
// display Qt finds (QT_QPA_PLATFORM picks one), applies further commands one per second, and
// prints each button's reply on stdout. For looking at windows by hand and from scripts. With
// --places it shows nothing and prints where the window's buttons stand, as the layout works
// them out, so that a script can press them wherever a font or a caption puts them.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "json/tree_dictionary.h"
#include "platform/font_metrics_measurer.h"
#include "platform/run_loop.h"
#include "platform/text.h"
#include "progress/progress_layout.h"
#include "progress/wprogress.h"

namespace {

const char* const kUsage =
    "usage: qem_progress_window [--seconds=N] CREATE_JSON [COMMAND_JSON...]\n"
    "       qem_progress_window --places CREATE_JSON\n"
    "Shows a progress window made from CREATE_JSON, applies each COMMAND_JSON one second after\n"
    "the one before, prints every reply on stdout, and ends after N seconds (default 30).\n"
    "--places shows nothing: it prints a line \"ID X Y\" for each button the window shows, left\n"
    "to right, X and Y its centre in the window's client area.\n"
    "Example: qem_progress_window '{\"style\":3,\"title\":\"Copy\",\"message\":\"Step 1\",'\n"
    "           '\"progress\":0.3,\"btn_spec\":[{\"id\":\"stop\",\"text\":\"Stop\"}]}'\n";

class PrintReplies : public message_forwarder {
 public:
  void write(const std::string& message) override {
    std::printf("%s\n", message.c_str());
    std::fflush(stdout);
  }
};

// Prints where the buttons of the window made from `create` stand, by the layout's own numbers.
int PrintPlaces(int argc, char** argv, const std::string& create) {
  // Text is measured as on any display; nothing is shown, so none is needed.
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  platform::DesktopApplication application(argc, argv);
  wProgress window("w1", JSON::JSONStringToTreeDictionary(create), nullptr);
  auto measurer = platform::FontMetricsMeasurer();
  const auto look = progress_layout::compute(window.state(), window.Width(), *measurer);
  const auto& entries = window.state().btn_specs;
  for (std::size_t slot : look.on_screen) {
    const auto& place = look.buttons[slot].place;
    std::printf("%s %lld %lld\n", entries[slot]->id.c_str(),
                static_cast<long long>(place.left + place.width / 2),
                static_cast<long long>(place.top + place.height / 2));
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  double seconds = 30;
  std::vector<std::string> commands;
  if (argc == 3 && std::strcmp(argv[1], "--places") == 0) return PrintPlaces(argc, argv, argv[2]);
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--seconds=", 10) == 0) {
      seconds = platform::Val(argv[i] + 10);
    } else if (std::strcmp(argv[i], "--help") == 0) {
      std::fputs(kUsage, stdout);
      return 0;
    } else {
      commands.emplace_back(argv[i]);
    }
  }
  if (commands.empty()) {
    std::fputs(kUsage, stderr);
    return 2;
  }

  platform::DesktopApplication application(argc, argv);
  application.AllowAutoQuit(false);
  wProgress window("w1", JSON::JSONStringToTreeDictionary(commands.front()),
                   std::make_shared<PrintReplies>());
  window.Show();

  std::size_t next = 1;
  platform::Timer commands_timer;
  commands_timer.Period(1000);
  commands_timer.AddActionHandler([&](platform::Timer&) {
    if (next < commands.size()) window.cmd(JSON::JSONStringToTreeDictionary(commands[next++]));
  });
  commands_timer.RunMode(platform::Timer::Multiple);

  platform::Timer end_timer;
  end_timer.Period(static_cast<int>(seconds * 1000));
  end_timer.AddActionHandler([](platform::Timer&) { platform::Quit(0); });
  end_timer.RunMode(platform::Timer::Single);
  return application.Run();
}
