// The command server under load, in this process (offscreen), fed by sender processes (this
// program again, in its sender role). Each "set" carries the moment its sender began to send it
// (the steady clock, which all processes of the machine share); the moment the server changes the
// window's title is caught by an event filter. Runs everything twice: as the helper serves (the
// channel watched, the tick a safety net once the stay-alive lock is watched too), and with the
// channel's watch off, so the short tick alone; and prints:
//  1. command latency, send to window changed, through the live server: median and p99, one
//     sender sending at random moments [goals as served: median at or under 1 ms, p99 at or
//     under 5 ms; with the tick alone: median at or under 15 ms, p99 at or under 30 ms];
//  2. a burst of "set" commands from one sender and from eight, each sender sending as fast as it
//     can with one op per message as a starting application would: commands per second through
//     the server, and how long the backlog took to drain after the last send [goals: at least
//     8,000 per second; the backlog drained within 1 s];
//  3. the longest stall of the GUI thread while the eight senders flood the channel, seen by a
//     1 ms heartbeat timer [goal: under 15 ms];
//  4. how often the message step ran, woken and by the tick, beside the messages it took.
//
// Usage: server_bench [LATENCY_SAMPLES] [BURST_MESSAGES]   (defaults 300 and 6000)
//        QEM_BENCH_WAKE=on or off: only that half
//        server_bench send TAG COUNT PAUSE_US               (the sender role; PAUSE_US 0: flood)

#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <QApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "app/window_maker.h"
#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel/many_to_one_sender.h"
#include "platform/clock.h"
#include "platform/run_loop.h"
#include "server/qem_util.h"
#include "support/private_folders.h"

extern char** environ;

namespace {

constexpr const char* kChannel = "bench";

// The sender role: COUNT "set" commands for window "w<TAG>", title "<TAG>:<index>:<send us>".
int SenderRole(int tag, int count, int pause_us) {
  auto sock = std::make_shared<many_to_one::sender>(kChannel, log_file::make_null());
  std::mt19937 random(static_cast<unsigned>(::getpid()));
  std::uniform_int_distribution<int> spread(0, pause_us);
  for (int i = 0; i < count; ++i) {
    if (pause_us > 0) std::this_thread::sleep_for(std::chrono::microseconds(spread(random)));
    const auto stamp = static_cast<long long>(platform::Microseconds());
    sock->op()->write(R"({"obj_id":"w)" + std::to_string(tag) + R"(","cmd":"set","title":")" +
                      std::to_string(tag) + ":" + std::to_string(i) + ":" + std::to_string(stamp) +
                      R"("})");
  }
  return 0;
}

pid_t StartSender(int tag, int count, int pause_us) {
  std::vector<std::string> args = {"/proc/self/exe", "send", std::to_string(tag),
                                   std::to_string(count), std::to_string(pause_us)};
  std::vector<char*> argv;
  for (auto& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  if (::posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) std::abort();
  return pid;
}

// Title changes of the windows, as the server makes them.
class TitleWatch : public QObject {
 public:
  struct Change {
    double at_us, sent_us;
  };
  std::vector<Change> changes;

  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::WindowTitleChange && object->isWidgetType()) {
      const std::string title = static_cast<QWidget*>(object)->windowTitle().toStdString();
      const std::size_t last = title.rfind(':');
      if (last != std::string::npos && title.find(':') != last) {
        changes.push_back({platform::Microseconds(), std::atof(title.c_str() + last + 1)});
      }
    }
    return false;
  }
};

// CPU time of the calling thread, in microseconds.
double ThreadCpuMicroseconds() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

// A 1 ms heartbeat on the GUI thread, while it is armed: the longest gap between two of its
// beats, and the longest stretch of the thread's own work between two beats. The gap also holds
// the time the thread waited for a CPU; the work is what the code itself held the thread for.
class Heartbeat {
 public:
  Heartbeat() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      const double now = platform::Microseconds(), cpu = ThreadCpuMicroseconds();
      if (last_ > 0) {
        longest_gap_ = std::max(longest_gap_, now - last_);
        longest_work_ = std::max(longest_work_, cpu - last_cpu_);
      }
      last_ = now;
      last_cpu_ = cpu;
    });
  }
  void Start() {
    last_ = longest_gap_ = longest_work_ = 0;
    timer_.start(1);
  }
  void Stop() { timer_.stop(); }
  double longest_gap_ms() const { return longest_gap_ / 1000.0; }
  double longest_work_ms() const { return longest_work_ / 1000.0; }

 private:
  QTimer timer_;
  double last_ = 0, last_cpu_ = 0, longest_gap_ = 0, longest_work_ = 0;
};

void RunUntil(const std::function<bool()>& done) {
  while (!done()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

double Percentile(std::vector<double> values, double p) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5)];
}

// Runs the senders to their end and until every command reached its window. Gives the
// changes seen.
std::vector<TitleWatch::Change> Run(TitleWatch& watch, int senders, int per_sender, int pause) {
  watch.changes.clear();
  std::vector<pid_t> children;
  for (int tag = 0; tag < senders; ++tag) children.push_back(StartSender(tag, per_sender, pause));
  const std::size_t total = static_cast<std::size_t>(senders * per_sender);
  RunUntil([&] { return watch.changes.size() >= total; });
  for (pid_t pid : children) ::waitpid(pid, nullptr, 0);
  return watch.changes;
}

void Burst(TitleWatch& watch, int senders, int per_sender, Heartbeat* heartbeat) {
  if (heartbeat) heartbeat->Start();
  auto changes = Run(watch, senders, per_sender, 0);
  if (heartbeat) heartbeat->Stop();
  double first_sent = changes.front().sent_us, last_sent = 0, last_changed = 0;
  for (const auto& c : changes) {
    first_sent = std::min(first_sent, c.sent_us);
    last_sent = std::max(last_sent, c.sent_us);
    last_changed = std::max(last_changed, c.at_us);
  }
  const double total = static_cast<double>(changes.size());
  std::printf(
      "  %d sender%s x %d: %.0f commands/s through the server (senders sent %.0f/s); backlog "
      "after the last send drained in %.1f ms\n",
      senders, senders == 1 ? " " : "s", per_sender, total / ((last_changed - first_sent) / 1e6),
      total / ((last_sent - first_sent) / 1e6), (last_changed - last_sent) / 1000.0);
  if (heartbeat) {
    std::printf(
        "Longest stall of the GUI thread while %d senders flood: %.1f ms of its own work between "
        "two 1 ms heartbeats [goal: under 15]; longest gap between heartbeats %.1f ms, waiting for "
        "a CPU included\n",
        senders, heartbeat->longest_work_ms(), heartbeat->longest_gap_ms());
  }
}

// Everything of one half: a new server with the channel's watch on or off, its eight windows,
// the latency, the bursts and the steps.
void Measure(bool wake, int samples, int burst) {
  qem_util::pacing pace;
  pace.watch_channel = wake;
  auto server = std::make_unique<qem_util>("alive", kChannel, "", "up", make_progress_window, pace);
  for (int tag = 0; tag < 8; ++tag) {
    server->process(
        R"({"obj_id":"w)" + std::to_string(tag) +
        R"(","cmd":"create","type":"wprogress","style":3,"title":"start",)"
        R"("message":"Copying","progress":0.5,"btn_spec":[{"id":"stop","text":"Stop"}]})");
  }
  TitleWatch watch;
  QCoreApplication::instance()->installEventFilter(&watch);
  Heartbeat heartbeat;
  std::printf("%s:\n", wake ? "As the helper serves (the channel watched)"
                            : "With the tick alone (the channel's watch off)");

  // 1. One sender at random moments, 0 to 50 ms apart, so that sends fall anywhere in a tick.
  auto changes = Run(watch, 1, samples, 50'000);
  std::vector<double> latency;
  for (const auto& c : changes) latency.push_back((c.at_us - c.sent_us) / 1000.0);
  std::printf("Command latency, send to window changed (%d commands, one sender):\n", samples);
  std::printf(
      "  median %.1f ms [goal: at or under %s], p99 %.1f ms [goal: at or under %s], "
      "min %.1f ms, max %.1f ms\n",
      Percentile(latency, 0.5), wake ? "1" : "15", Percentile(latency, 0.99), wake ? "5" : "30",
      Percentile(latency, 0.0), Percentile(latency, 1.0));

  // 2 and 3. Bursts.
  std::printf(
      "Burst of \"set\" commands, one op per message [goals: at least 8000/s; backlog "
      "drained within 1000 ms]:\n");
  const qem_util::step_counts before = server->steps();
  Burst(watch, 1, burst, nullptr);
  Burst(watch, 8, burst / 8, &heartbeat);
  std::printf("Message steps during the bursts: %llu woken, %llu ticks, for %d messages\n\n",
              static_cast<unsigned long long>(server->steps().woken - before.woken),
              static_cast<unsigned long long>(server->steps().ticks - before.ticks),
              burst + burst / 8 * 8);
  QCoreApplication::instance()->removeEventFilter(&watch);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 5 && std::string(argv[1]) == "send") {
    return SenderRole(std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]));
  }
  const int samples = argc > 1 ? std::atoi(argv[1]) : 300;
  const int burst = argc > 2 ? std::atoi(argv[2]) : 6000;
  const char* only = std::getenv("QEM_BENCH_WAKE");
  const std::string half = only ? only : "";
  qem_test::PrivateFolders folders;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  auto alive = lock_file::make("alive", log_file::make_null());
  platform::DesktopApplication application(argc, argv);
  if (half != "off") Measure(true, samples, burst);
  if (half != "on") Measure(false, samples, burst);
  return 0;
}
