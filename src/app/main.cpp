#include <cstdio>
#include <cstdlib>
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
  App application(argc, argv);
  const int status = application.Run();
  // What others can see ends in order: windows closed, locks let go and their files removed.
  application.End();
#if !defined(__SANITIZE_ADDRESS__)
  // The rest of the GUI's teardown is seen by nobody and would hold up the exit that the
  // starting application may be waiting for (it even reads the font configuration when no
  // window ever drew text): the process ends without it. A build that looks for leaks goes
  // through it all.
  std::fflush(nullptr);
  std::_Exit(status);
#else
  return status;
#endif
}
