#pragma once
// App: the application object. It chooses the mode from the command line at start-up and owns
// the command server, or in test mode the test console, for the life of the process. Its menu
// bar is MainMenuBar in both modes.

#include <memory>
#include <optional>

#include "console/qem_util_test.h"
#include "platform/run_loop.h"
#include "server/qem_util.h"

class App : public platform::DesktopApplication {
 public:
  // Makes the application object with the menu bar set. From then on SIGTERM, SIGINT and SIGHUP
  // end the run loop as Quit(0) does.
  App(int& argc, char** argv);
  ~App() override;

  // Reads and checks the options and the folders, before the GUI application exists; touches no
  // file. Gives the exit status of a refusal, or nothing when the process goes on. Test mode
  // goes on. Server mode is refused when one of the three required options is empty (status 0,
  // no word), a name would leave its folder (one line on stderr naming the option, status 2), or
  // the temporary or preferences folder can't be used (one line naming the folder, status 4).
  static std::optional<int> refusal();

  // The choice of mode, once, from the run loop. Test mode: the console, which runs until it is
  // closed. Server mode, with options that refusal() let through: the server is made and runs
  // from its timer.
  void Event_Opening() override;

  // What other processes can see of this one ends: the server, or the console, goes with its
  // windows and its locks, whose files are removed. The run loop must have returned.
  void End();

 private:
  std::unique_ptr<qem_util> util;
  std::unique_ptr<qem_util_test> util_test;
};

// The one App instance.
App& app();
