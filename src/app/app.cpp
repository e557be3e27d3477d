#include "app/app.h"

#include <csignal>
#include <cstdio>
#include <string>

#include "app/folder_check.h"
#include "app/main_menu_bar.h"
#include "app/misc.h"
#include "app/window_maker.h"
#include "channel/names.h"
#include "platform/text.h"

App::App(int& argc, char** argv) : platform::DesktopApplication(argc, argv) {
  MenuBar(main_menu_bar());
  // A signal to end ends the process as the stay-alive lock's release does: in order, status 0.
  QuitOnSignals({SIGTERM, SIGINT, SIGHUP});
}

App::~App() = default;

void App::End() {
  util.reset();
  util_test.reset();
}

App& app() {
  return *static_cast<App*>(platform::DesktopApplication::Instance());
}

namespace {
// One stderr line naming the option, when its value would leave its folder.
bool Refused(const char* option, const std::string& value, bool is_channel) {
  auto why = is_channel ? names::channel_id_refusal(value) : names::lock_name_refusal(value);
  if (!why) return false;
  std::fprintf(stderr, "qem_util: --%s %s\n", option, why->c_str());
  return true;
}
}  // namespace

std::optional<int> App::refusal() {
  if (platform::EqualsPlain(misc::cmd_line("test"), "true")) return std::nullopt;
  std::string stay_alive_key = misc::cmd_line("stay-alive-key");
  std::string channel = misc::cmd_line("channel");
  std::string reply_channel = misc::cmd_line("reply-channel");
  std::string launch_key = misc::cmd_line("launch-key");
  if (stay_alive_key.empty() || channel.empty() || launch_key.empty()) return 0;
  if (Refused("stay-alive-key", stay_alive_key, false) || Refused("channel", channel, true) ||
      Refused("reply-channel", reply_channel, true) || Refused("launch-key", launch_key, false)) {
    return 2;
  }
  if (auto refusal = folder_check::refusal()) {
    std::fprintf(stderr, "%s\n", refusal->c_str());
    return 4;
  }
  return std::nullopt;
}

void App::Event_Opening() {
  if (platform::EqualsPlain(misc::cmd_line("test"), "true")) {
    util_test = std::make_unique<qem_util_test>();
    AllowAutoQuit(false);
    return;
  }
  util = std::make_unique<qem_util>(misc::cmd_line("stay-alive-key"), misc::cmd_line("channel"),
                                    misc::cmd_line("reply-channel"), misc::cmd_line("launch-key"),
                                    make_progress_window);
  AllowAutoQuit(false);
}
