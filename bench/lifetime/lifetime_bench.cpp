// Measures, on the real executable (offscreen):
//  - the time from exec to the launch lock being taken, median of 20 starts;
//  - an idle helper, with no window and then with 10 progress windows with determinate bars:
//    its wakeups per second, counted as the context switches of all its threads over 30 s
//    [goal: at most 1], its CPU time [goal: at most 0.05% of a core] and its resident memory;
//  - the time from the starting application letting go of the stay-alive lock, and from the
//    holder of that lock being killed with -9, to the helper's exit, and on the way to its
//    launch lock being let go: median of 20 each [goal: at most 5 ms to the exit];
//  - beside them, what the kernel alone takes to end a process that watches a folder with
//    inotify, as the helper does: the part of the exit that no helper can avoid on this machine.
// Usage: lifetime_bench [STARTS] [IDLE_SECONDS] [HELPER]
//        (defaults 20, 30 and the helper built beside this program)
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#ifdef __linux__
#include <sys/inotify.h>
#endif
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"
#include "support/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

const char* g_helper = QEM_UTIL_PATH;

pid_t StartHelper() {
  pid_t pid = ::fork();
  if (pid == 0) {
    const char* args[] = {g_helper, "--stay-alive-key=alive", "--channel=bench", "--launch-key=up",
                          nullptr};
    ::execv(args[0], const_cast<char* const*>(args));
    ::_exit(127);
  }
  return pid;
}

// A child process that holds the stay-alive lock until it is killed, as a starting application
// does; returns once it holds it.
pid_t StartHolder() {
  int ready[2];
  if (::pipe(ready) != 0) std::abort();
  pid_t pid = ::fork();
  if (pid == 0) {
    auto alive = lock_file::make("alive", log_file::make_null());
    [[maybe_unused]] auto told = ::write(ready[1], alive ? "1" : "0", 1);
    for (;;) ::pause();
  }
  char held = '0';
  [[maybe_unused]] auto got = ::read(ready[0], &held, 1);
  ::close(ready[0]);
  ::close(ready[1]);
  if (held != '1') std::abort();
  return pid;
}

// The helper is up once its launch lock's file is there (it makes the file with its first
// attempt, which nobody contends). Watching it disturbs nothing.
void AwaitUp(const fs::path& launch_file) {
  while (!fs::exists(launch_file)) std::this_thread::sleep_for(50us);
}

double Milliseconds(Clock::time_point from) {
  return std::chrono::duration<double, std::milli>(Clock::now() - from).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Ending {
  double launch_lock = 0, exit = 0;
};

// Ends the helper by `end` and times it: to its launch lock let go (seen by a thread that waits
// for that lock) and to its exit.
template <typename End>
Ending TimeEnd(pid_t pid, const fs::path& launch_file, End end) {
  Ending took;
  const int fd = ::open(launch_file.c_str(), O_RDONLY | O_CLOEXEC);
  Clock::time_point begin;
  std::thread waiter([&] {
    ::flock(fd, LOCK_EX);
    took.launch_lock = Milliseconds(begin);
    ::close(fd);
  });
  std::this_thread::sleep_for(10ms);  // the waiter waits
  begin = Clock::now();
  end();
  int status;
  ::waitpid(pid, &status, 0);
  took.exit = Milliseconds(begin);
  waiter.join();
  return took;
}

void PrintEnding(const char* what, const std::vector<Ending>& endings) {
  std::vector<double> locks, exits;
  for (const Ending& e : endings) {
    locks.push_back(e.launch_lock);
    exits.push_back(e.exit);
  }
  std::printf(
      "%s to the helper's exit: median %.1f ms, max %.1f ms [goal: at most 5 ms]; to its launch "
      "lock let go: median %.1f ms\n",
      what, Median(exits), *std::max_element(exits.begin(), exits.end()), Median(locks));
}

// The same end for a process that only watches a folder with inotify: median of `count`.
double BareWatcherExit(const fs::path& folder, int count) {
  std::vector<double> exits;
#ifdef __linux__
  for (int i = 0; i < count; ++i) {
    int go[2];
    if (::pipe(go) != 0) std::abort();
    const pid_t pid = ::fork();
    if (pid == 0) {
      const int watch = ::inotify_init1(IN_CLOEXEC);
      ::inotify_add_watch(watch, folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO);
      char byte;
      ::close(go[1]);
      [[maybe_unused]] auto got = ::read(go[0], &byte, 1);
      ::_exit(0);
    }
    ::close(go[0]);
    std::this_thread::sleep_for(200ms);
    const auto begin = Clock::now();
    ::close(go[1]);
    ::waitpid(pid, nullptr, 0);
    exits.push_back(Milliseconds(begin));
  }
#else
  (void)folder;
  exits.push_back(0);
  (void)count;
#endif
  return Median(exits);
}

// Nanoseconds of CPU time (user and system) a process has used, from its CPU-time clock.
double CpuNanoseconds(pid_t pid) {
  clockid_t clock;
  timespec used{};
  if (::clock_getcpuclockid(pid, &clock) != 0 || ::clock_gettime(clock, &used) != 0) return 0;
  return static_cast<double>(used.tv_sec) * 1e9 + static_cast<double>(used.tv_nsec);
}

// The number after `key` in a /proc status file, or 0.
long StatusNumber(const fs::path& status, const std::string& key) {
  std::ifstream in(status);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + key.size());
  }
  return 0;
}

// Context switches of each thread of a process, by thread id: each is the thread going to
// sleep, or being put aside, after a wakeup.
std::map<std::string, long> ContextSwitches(pid_t pid) {
  std::map<std::string, long> switches;
  for (const auto& task : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
    switches[task.path().filename().string()] =
        StatusNumber(task.path() / "status", "voluntary_ctxt_switches:") +
        StatusNumber(task.path() / "status", "nonvoluntary_ctxt_switches:");
  }
  return switches;
}

void Idle(pid_t pid, int seconds, const char* what) {
  // Looked at once a second, so that a thread that ends on the way (a pool's idle worker)
  // counts for what it did until then, and one that starts counts from nothing.
  const std::map<std::string, long> first = ContextSwitches(pid);
  std::map<std::string, long> last = first;
  const double cpu = CpuNanoseconds(pid);
  const auto begin = Clock::now();
  for (int second = 0; second < seconds; ++second) {
    std::this_thread::sleep_for(1s);
    for (const auto& [thread, count] : ContextSwitches(pid)) last[thread] = count;
  }
  const double elapsed = Milliseconds(begin) / 1000.0;
  long switches = 0;
  for (const auto& [thread, count] : last) {
    switches += count - (first.count(thread) ? first.at(thread) : 0);
  }
  const double wakeups = static_cast<double>(switches) / elapsed;
  const double share = (CpuNanoseconds(pid) - cpu) / 1e9 / elapsed * 100.0;
  std::printf(
      "idle helper, %-26s %.2f wakeups/s [goal: at most 1], %.3f%% of a core [goal: at most "
      "0.05%%] over %.0f s; RSS %.1f MB\n",
      what, wakeups, share, elapsed,
      static_cast<double>(StatusNumber("/proc/" + std::to_string(pid) + "/status", "VmRSS:")) /
          1024.0);
}

}  // namespace

int main(int argc, char** argv) {
  const int starts = argc > 1 ? std::atoi(argv[1]) : 20;
  const int idle_seconds = argc > 2 ? std::atoi(argv[2]) : 30;
  if (argc > 3) g_helper = argv[3];
  qem_test::PrivateFolders folders;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const fs::path launch_file = folders.tmp() / "up";
  int status;

  std::vector<double> up;
  std::vector<Ending> let_go, killed;
  for (int i = 0; i < starts; ++i) {
    auto alive = lock_file::make("alive", log_file::make_null());
    const auto begin = Clock::now();
    pid_t pid = StartHelper();
    AwaitUp(launch_file);
    up.push_back(Milliseconds(begin));
    // Settled: the helper waits as it does for most of its life.
    std::this_thread::sleep_for(200ms);
    let_go.push_back(TimeEnd(pid, launch_file, [&] { alive.reset(); }));

    const pid_t holder = StartHolder();
    pid = StartHelper();
    AwaitUp(launch_file);
    std::this_thread::sleep_for(200ms);
    killed.push_back(TimeEnd(pid, launch_file, [&] { ::kill(holder, SIGKILL); }));
    ::waitpid(holder, &status, 0);
  }
  std::printf("exec to launch lock taken: median %.1f ms, min %.1f ms, max %.1f ms (%d starts)\n",
              Median(up), *std::min_element(up.begin(), up.end()),
              *std::max_element(up.begin(), up.end()), starts);
  PrintEnding("stay-alive lock let go", let_go);
  PrintEnding("holder of the stay-alive lock killed (-9)", killed);
  std::printf(
      "a bare process watching a folder with inotify, told to end, to its exit: median "
      "%.1f ms\n",
      BareWatcherExit(folders.prefs(), starts));

  auto alive = lock_file::make("alive", log_file::make_null());
  pid_t pid = StartHelper();
  AwaitUp(launch_file);
  std::this_thread::sleep_for(1s);
  Idle(pid, idle_seconds, "no window:");

  auto sock = std::make_shared<many_to_one::sender>("bench", log_file::make_null());
  const fs::path data = folders.prefs() / "qem.many_to_one.bench.dir" / "data";
  for (int i = 0; i < 10; ++i) {
    sock->op()->write(R"({"obj_id":"w)" + std::to_string(i) +
                      R"(","cmd":"create","type":"wprogress","style":3,"title":"Backup",)"
                      R"("message":"Copying 1,204 files","progress":0.25,)"
                      R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})");
  }
  while (fs::exists(data)) std::this_thread::sleep_for(5ms);
  std::this_thread::sleep_for(1s);
  Idle(pid, idle_seconds, "10 windows with bars:");
  alive.reset();
  ::waitpid(pid, &status, 0);
  return 0;
}
