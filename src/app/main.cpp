#include <optional>

#include "app/app.h"
#include "platform/system.h"

int main(int argc, char** argv) {
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
