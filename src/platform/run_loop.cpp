#include "platform/run_loop.h"

#include <cstdio>

#include <QApplication>
#include <QMenuBar>
#include <QTimer>

#include "platform/desktop_menu.h"
#include "platform/event_guard.h"

namespace platform {

namespace {
DesktopApplication* g_instance = nullptr;
bool g_quit_requested = false;
int g_quit_status = 0;
QtMessageHandler g_previous_handler = nullptr;

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
