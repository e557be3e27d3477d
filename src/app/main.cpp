#include <cstdio>
#include <cstring>
#include <optional>

#include "app/app.h"
#include "platform/system.h"

namespace {

constexpr const char* kUsage =
    "Usage: qem_util --stay-alive-key=NAME --channel=ID --launch-key=NAME [--reply-channel=ID]\n"
    "       qem_util --test=true\n"
    "       qem_util --help | --version\n"
    "\n"
    "Shows floating progress windows for the program that starts it, which drives it through\n"
    "files: commands arrive on the channel ID, replies to button presses go out on the reply\n"
    "channel. The helper holds the lock --launch-key in the temporary folder while it serves and\n"
    "quits once nobody holds the lock --stay-alive-key there. A required option that is missing\n"
    "or empty ends it at once, silently. --test=true shows the test console instead.\n"
    "\n"
    "Exit status: 0 done (also on SIGTERM, SIGINT or SIGHUP); 2 a name that would leave its\n"
    "folder; 3 another helper serves the channel; 4 the temporary or preferences folder or the\n"
    "channel can't be used. qem_util(1) tells the others, and the files.\n";

// The answer to `--help` or `--version` when it is the whole command line; nothing otherwise.
// A starting application passes neither, so every command line it sends keeps its meaning.
std::optional<const char*> Answer(int argc, char** argv) {
  if (argc != 2) return std::nullopt;
  if (std::strcmp(argv[1], "--help") == 0) return kUsage;
  if (std::strcmp(argv[1], "--version") == 0) return "qem_util " QEM_UTIL_VERSION "\n";
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
  if (auto answer = Answer(argc, argv)) {
    std::fputs(*answer, stdout);
    return 0;
  }
  platform::System::SetArguments(argc, argv);
  // The options are checked before the GUI exists: a refusal touches no file, needs no display
  // and ends the process at once.
  if (std::optional<int> status = App::refusal()) return *status;
  int status;
  {
    // The application, and with it the server and every lock it holds, goes before the process
    // exits, so held locks are released in order and their files removed.
    App application(argc, argv);
    status = application.Run();
  }
  return status;
}
