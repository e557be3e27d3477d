#include "platform/run_loop.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include <QApplication>
#include <QMenuBar>
#include <QSocketNotifier>
#include <QTimer>

#include "platform/desktop_menu.h"
#include "platform/event_guard.h"

namespace platform {

namespace {
DesktopApplication* g_instance = nullptr;
bool g_quit_requested = false;
int g_quit_status = 0;
QtMessageHandler g_previous_handler = nullptr;

// The pipe from the handler of the signals that end the loop to the loop, and those signals.
int g_signal_pipe[2] = {-1, -1};
std::vector<int> g_quit_signals;

// Runs inside the signal: one byte into the pipe, which is all that is safe there. A full pipe
// already says that a signal came.
extern "C" void TellLoopOfSignal(int) {
  const int saved = errno;
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(g_signal_pipe[1], &byte, 1);
  errno = saved;
}

bool MakeSignalPipe() {
  if (g_signal_pipe[0] >= 0) return true;
  if (::pipe(g_signal_pipe) != 0) return false;
  for (int fd : g_signal_pipe) {
    ::fcntl(fd, F_SETFD, FD_CLOEXEC);  // a launched program inherits none of it
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
  }
  return true;
}

// A platform without window stacking or size hints (offscreen, the headless one) says so on
// every raise and resize of a window; those notes are dropped. Every other message of Qt goes
// on as before.
void DropPlatformNotes(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type == QtWarningMsg && message.startsWith(QLatin1String("This plugin does not support"))) {
    return;
  }
  if (g_previous_handler) {
    g_previous_handler(type, context, message);
  } else {
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
  }
}
}  // namespace

DesktopApplication::DesktopApplication(int& argc, char** argv)
    : qt_(std::make_unique<QApplication>(argc, argv)) {
  static const QtMessageHandler previous = qInstallMessageHandler(DropPlatformNotes);
  g_previous_handler = previous;
  g_instance = this;
  g_quit_requested = false;
  g_quit_status = 0;
}

DesktopApplication::~DesktopApplication() {
  for (int number : g_quit_signals) ::signal(number, SIG_DFL);
  g_quit_signals.clear();
  signal_notifier_.reset();
  if (g_instance == this) g_instance = nullptr;
}

DesktopApplication* DesktopApplication::Instance() noexcept {
  return g_instance;
}

int DesktopApplication::Run() {
  QTimer::singleShot(0, qt_.get(), [this] {
    GuardEvent([this] { Event_Opening(); });
    // A Quit during start-up is seen here as well as by the loop.
    if (g_quit_requested) QCoreApplication::exit(g_quit_status);
  });
  if (!g_quit_requested) QApplication::exec();
  return g_quit_status;
}

bool DesktopApplication::QuitOnSignals(std::initializer_list<int> numbers) {
  if (!MakeSignalPipe()) return false;
  if (!signal_notifier_) {
    signal_notifier_ = std::make_unique<QSocketNotifier>(g_signal_pipe[0], QSocketNotifier::Read);
    QObject::connect(signal_notifier_.get(), &QSocketNotifier::activated, [] {
      char drained[64];
      while (::read(g_signal_pipe[0], drained, sizeof drained) > 0) {
      }
      GuardEvent([] {
        if (!g_quit_requested) Quit(0);
      });
    });
  }
  struct sigaction action {};
  action.sa_handler = TellLoopOfSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int number : numbers) {
    if (::sigaction(number, &action, nullptr) == 0) g_quit_signals.push_back(number);
  }
  return true;
}

void DesktopApplication::AllowAutoQuit(bool allow) {
  QApplication::setQuitOnLastWindowClosed(allow);
}

void DesktopApplication::MenuBar(std::shared_ptr<DesktopMenuBar> bar) {
  menu_bar_ = std::move(bar);
#ifdef __APPLE__
  // A menu bar without a parent is the screen's.
  screen_menu_bar_.reset(menu_bar_ ? MakeMenuBar(menu_bar_, nullptr) : nullptr);
#endif
}

void Quit(int status) {
  g_quit_requested = true;
  g_quit_status = status;
  // Before the loop has started this is ignored by Qt; Run then sees the flag instead.
  if (QCoreApplication::instance()) QCoreApplication::exit(status);
}

bool QuitRequested() noexcept {
  return g_quit_requested;
}

Timer::Timer() : qt_(std::make_unique<QTimer>()) {
  QObject::connect(qt_.get(), &QTimer::timeout, [this] {
    if (mode_ == Single) mode_ = Off;
    if (action_) GuardEvent([this] { action_(*this); });
  });
}

Timer::~Timer() = default;

void Timer::Period(int milliseconds) {
  period_ = milliseconds;
  if (mode_ != Off) qt_->start(period_);
}

void Timer::RunMode(Mode mode) {
  mode_ = mode;
  if (mode == Off) {
    qt_->stop();
    return;
  }
  qt_->setSingleShot(mode == Single);
  qt_->start(period_);
}

void Timer::AddActionHandler(std::function<void(Timer&)> handler) {
  action_ = std::move(handler);
}

}  // namespace platform
