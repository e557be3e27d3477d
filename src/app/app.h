#pragma once
// App: the application object. It chooses the mode from the command line at start-up and owns
// the command server, or in test mode the test console, for the life of the process. Its menu
// bar is MainMenuBar in both modes.

#include <memory>

#include "app/qem_util.h"
#include "console/qem_util_test.h"
#include "platform/run_loop.h"

class App : public platform::DesktopApplication {
 public:
  // Makes the application object with the menu bar set.
  App(int& argc, char** argv);
  ~App() override;

  // The choice of mode, once, from the run loop. Test mode: the console, which runs until it is
  // closed; no other option is read. Server mode: the three required options must be non-empty
  // (else Quit(0) with no word and no file touched) and every name must stay inside its folder
  // (else one stderr line and Quit(2)); the temporary and preferences folders must be usable
  // (else one stderr line naming the folder and Quit(4), no file touched); then the server is
  // made and runs from the timer.
  void Event_Opening() override;

 private:
  std::unique_ptr<qem_util> util;
  std::unique_ptr<qem_util_test> util_test;
};

// The one App instance.
App& app();
