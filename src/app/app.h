#pragma once
// App: the application object. It chooses the mode from the command line at start-up and owns
// the command server for the life of the process.

#include <memory>
#include <optional>

#include "app/qem_util.h"
#include "platform/run_loop.h"

class App : public platform::DesktopApplication {
 public:
  App(int& argc, char** argv);
  ~App() override;

  // Reads and checks the options, before the GUI application exists; touches no file. Gives the
  // exit status of a refusal, or nothing when the process goes on. Test mode goes on. Server
  // mode is refused when one of the three required options is empty (status 0, no word) or a
  // name would leave its folder (one line on stderr naming the option, status 2).
  static std::optional<int> refusal();

  // The choice of mode, once, from the run loop. Test mode: the console. Server mode, with
  // options that refusal() let through: the server is made and runs from its timer.
  void Event_Opening() override;

 private:
  std::unique_ptr<qem_util> util;
};

// The one App instance.
App& app();
