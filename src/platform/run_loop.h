#pragma once
// The run loop: the application object over Qt, Quit, and Timer. Everything runs on the main
// thread; timer and window events are delivered one after the other, each through the event
// guard, and each to its end.

#include <functional>
#include <initializer_list>
#include <memory>

class QApplication;
class QMenuBar;
class QSocketNotifier;
class QTimer;

namespace platform {

class DesktopMenuBar;

// The desktop application: owns the Qt application object. A subclass handles Event_Opening,
// which the loop delivers once, after start-up, through the event guard.
class DesktopApplication {
 public:
  // Makes the Qt application object. Only one may exist.
  DesktopApplication(int& argc, char** argv);
  virtual ~DesktopApplication();
  DesktopApplication(const DesktopApplication&) = delete;
  DesktopApplication& operator=(const DesktopApplication&) = delete;

  // Runs the loop until Quit; gives the status handed to Quit (0 if the loop ended otherwise).
  // Returns at once if Quit was called before.
  int Run();

  // False: the process does not end when its last window closes.
  void AllowAutoQuit(bool allow);

  // The application's menu bar: on macOS the screen's menu bar shows it from now on; elsewhere
  // each document window made from now on carries it. Nil: none.
  void MenuBar(std::shared_ptr<DesktopMenuBar> bar);
  const std::shared_ptr<DesktopMenuBar>& MenuBar() const noexcept { return menu_bar_; }

  // From now on each of the signals `numbers` (SIGTERM, SIGINT, SIGHUP) ends the run loop as
  // Quit(0) does, so that the process ends in order: windows closed, locks released, status 0.
  // The signal's handler only writes to a pipe; the run loop reads it and quits between two
  // events, never inside the handler, and never over the status of an earlier Quit. The signals
  // get their default handling back when the application object goes. False, and nothing
  // changed, when the pipe can't be made.
  bool QuitOnSignals(std::initializer_list<int> numbers);

  virtual void Event_Opening() {}

  // The one instance, or nil when none exists.
  static DesktopApplication* Instance() noexcept;

 private:
  std::unique_ptr<QApplication> qt_;
  std::shared_ptr<DesktopMenuBar> menu_bar_;
  // macOS: the screen's menu bar, a widget without a parent; it goes before the Qt application.
  std::unique_ptr<QMenuBar> screen_menu_bar_;
  // Watches the pipe that the signals of QuitOnSignals write to.
  std::unique_ptr<QSocketNotifier> signal_notifier_;
};

// Asks for an orderly end: records the status and makes the run loop return. Works also before
// the loop has started; the loop then ends at once. Never blocks.
void Quit(int status);
// True once Quit was called.
bool QuitRequested() noexcept;

// A repeating or one-shot timer on the main thread. Its action runs through the event guard.
class Timer {
 public:
  enum Mode { Off = 0, Single = 1, Multiple = 2 };

  Timer();
  ~Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  // The period in milliseconds.
  void Period(int milliseconds);
  int Period() const noexcept { return period_; }
  // Off stops the timer; Single and Multiple (re)start it with the current period.
  void RunMode(Mode mode);
  Mode RunMode() const noexcept { return mode_; }
  // The handler of the Action event; it receives the timer that fired.
  void AddActionHandler(std::function<void(Timer&)> handler);

 private:
  std::unique_ptr<QTimer> qt_;
  std::function<void(Timer&)> action_;
  int period_ = 1000;
  Mode mode_ = Off;
};

}  // namespace platform
