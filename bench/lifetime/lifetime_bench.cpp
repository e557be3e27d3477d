// Measures, on the real executable:
//  - the time from exec to the launch lock being taken, median of 20 starts;
//  - the CPU time per second and the resident memory of an idle helper over 10 s, with no window
//    and then with 10 progress windows open (offscreen) [goals: under 0.5% of a core, that is
//    5 ms of CPU per second; under 30 MB resident, and under 5 MB more with 10 windows];
//  - beside them, the CPU time per second of the idle helper with its wake-up on a write to the
//    channel off (QEM_UTIL_WAKE_ON_WRITE=0), so the tick alone [goal: the same as with it], and
//    of a bare Qt process whose only work is a 25 ms timer: what the ticks alone cost here.
// Usage: lifetime_bench [starts] [idle seconds]
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <QApplication>
#include <QTimer>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"
#include "support/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

pid_t StartHelper() {
  pid_t pid = ::fork();
  if (pid == 0) {
    const char* args[] = {QEM_UTIL_PATH, "--stay-alive-key=alive", "--channel=bench",
                          "--launch-key=up", nullptr};
    ::execv(args[0], const_cast<char* const*>(args));
    ::_exit(127);
  }
  return pid;
}

// This program again, as a bare Qt process with one 25 ms timer and nothing else.
pid_t StartBareTimer() {
  pid_t pid = ::fork();
  if (pid == 0) {
    const char* args[] = {"/proc/self/exe", "--bare-timer", nullptr};
    ::execv(args[0], const_cast<char* const*>(args));
    ::_exit(127);
  }
  return pid;
}

// Nanoseconds of CPU time (user and system) a process has used, from its CPU-time clock.
double CpuNanoseconds(pid_t pid) {
  clockid_t clock;
  timespec used{};
  if (::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &used) != 0) return 0;
  return static_cast<double>(used.tv_sec) * 1e9 + static_cast<double>(used.tv_nsec);
}

std::string StatusLine(pid_t pid, const std::string& key) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(key, 0) == 0) return line;
  }
  return key + " ?";
}

// CPU milliseconds per second of a running process over `seconds`.
double CpuPerSecond(pid_t pid, int seconds) {
  double before = CpuNanoseconds(pid);
  auto begin = Clock::now();
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  double ran = CpuNanoseconds(pid) - before;
  double elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
  return ran / 1e6 / elapsed;
}

long RssKb(pid_t pid) {
  std::string line = StatusLine(pid, "VmRSS:");
  return line.size() > 6 ? std::atol(line.c_str() + 6) : -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--bare-timer") {
    QApplication application(argc, argv);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [] {});
    timer.start(25);
    return application.exec();
  }
  int starts = argc > 1 ? std::atoi(argv[1]) : 20;
  int idle_seconds = argc > 2 ? std::atoi(argv[2]) : 10;
  qem_test::PrivateFolders folders;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  fs::path launch_file = folders.tmp() / "up";

  std::vector<double> millis;
  for (int i = 0; i < starts; ++i) {
    auto alive = lock_file::make("alive", log_file::make_null());
    auto begin = Clock::now();
    pid_t pid = StartHelper();
    // The helper creates the launch lock file with its first attempt, which nobody contends,
    // so the file's appearance is the moment the lock is taken. Watching it disturbs nothing.
    while (!fs::exists(launch_file)) std::this_thread::sleep_for(std::chrono::microseconds(50));
    millis.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    alive.reset();
    int status;
    ::waitpid(pid, &status, 0);
  }
  std::sort(millis.begin(), millis.end());
  std::printf("exec to launch lock taken: median %.1f ms, min %.1f ms, max %.1f ms (%d starts)\n",
              millis[millis.size() / 2], millis.front(), millis.back(), starts);

  auto alive = lock_file::make("alive", log_file::make_null());
  pid_t pid = StartHelper();
  while (!fs::exists(launch_file)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  double cpu = CpuPerSecond(pid, idle_seconds);
  long rss0 = RssKb(pid);
  std::printf(
      "idle helper, no window:   %.2f ms CPU per second (%.2f%% of a core) over %d s; "
      "RSS %.1f MB\n",
      cpu, cpu / 10.0, idle_seconds, static_cast<double>(rss0) / 1024.0);

  // Windows come in two steps: the first loads fonts and style once, the others show what a
  // window itself costs.
  auto sock = std::make_shared<many_to_one::sender>("bench", log_file::make_null());
  fs::path data = folders.prefs() / "qem.many_to_one.bench.dir" / "data";
  long rss1 = 0;
  for (int i = 0; i < 10; ++i) {
    sock->op()->write(R"({"obj_id":"w)" + std::to_string(i) +
                      R"(","cmd":"create","type":"wprogress","style":3,"title":"Backup",)"
                      R"("message":"Copying 1,204 files","progress":0.25,)"
                      R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})");
    if (i == 0 || i == 9) {
      while (fs::exists(data)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      std::this_thread::sleep_for(std::chrono::seconds(1));
      if (i == 0) rss1 = RssKb(pid);
    }
  }
  cpu = CpuPerSecond(pid, idle_seconds);
  long rss10 = RssKb(pid);
  std::printf(
      "idle helper, 10 windows:  %.2f ms CPU per second (%.2f%% of a core) over %d s; "
      "RSS %.1f MB (+%.1f MB: +%.1f MB with the first window, +%.0f kB per further "
      "window)\n",
      cpu, cpu / 10.0, idle_seconds, static_cast<double>(rss10) / 1024.0,
      static_cast<double>(rss10 - rss0) / 1024.0, static_cast<double>(rss1 - rss0) / 1024.0,
      static_cast<double>(rss10 - rss1) / 9.0);
  alive.reset();
  int status;
  ::waitpid(pid, &status, 0);

  ::setenv("QEM_UTIL_WAKE_ON_WRITE", "0", 1);
  alive = lock_file::make("alive", log_file::make_null());
  pid = StartHelper();
  ::unsetenv("QEM_UTIL_WAKE_ON_WRITE");
  while (!fs::exists(launch_file)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  cpu = CpuPerSecond(pid, idle_seconds);
  std::printf(
      "idle helper, no window, the wake-up off: %.2f ms CPU per second (%.2f%% of a core)\n", cpu,
      cpu / 10.0);
  alive.reset();
  ::waitpid(pid, &status, 0);

  pid = StartBareTimer();
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  cpu = CpuPerSecond(pid, idle_seconds);
  std::printf("bare Qt process with a 25 ms timer: %.2f ms CPU per second (%.2f%% of a core)\n",
              cpu, cpu / 10.0);
  ::kill(pid, SIGTERM);
  ::waitpid(pid, &status, 0);
  return 0;
}
