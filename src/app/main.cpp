#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/app.h"
#include "platform/system.h"

int main(int argc, char** argv) {
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
