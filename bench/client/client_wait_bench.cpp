// Measures what a starting application pays while it waits for its helper (the real helper,
// offscreen):
//  - wakeups while it waits in next_event with nothing coming: the context switches of every
//    thread of this process but the measuring one (voluntary and not, from
//    /proc/self/task/*/status) over a few seconds, per second [goal: at most 1];
//  - the helper killed with SIGKILL to the helper_ended event handed out by next_event, which was
//    already waiting when the signal went: median and max of 20 [goal: median at most 5 ms]; and
//    apart, the two parts of it: the kernel's own, from the signal until the process has ended
//    (as a process descriptor of this benchmark's tells: a process with a large address space
//    takes a while to be torn down, more so on a busy machine), and the library's, from then to
//    the event.
// Usage: client_wait_bench [idle seconds] [kills]
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
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

#include "client/session.h"
#include "support/private_folders.h"

namespace {

using Clock = std::chrono::steady_clock;

// Context switches of every thread of this process but the calling one.
long OtherThreadsSwitches() {
  const std::string self = std::to_string(::syscall(SYS_gettid));
  long sum = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (task.path().filename() == self) continue;
    std::ifstream in(task.path() / "status");
    for (std::string line; std::getline(in, line);) {
      if (line.find("ctxt_switches:") != std::string::npos) {
        sum += std::atol(line.c_str() + line.find(':') + 1);
      }
    }
  }
  return sum;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const int idle_seconds = argc > 1 ? std::atoi(argv[1]) : 5;
  const int kills = argc > 2 ? std::atoi(argv[2]) : 20;
  qem_test::PrivateFolders folders;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const qem_client::launch_options options{.helper = QEM_UTIL_PATH, .relay_helper_output = false};

  {
    qem_client::session s(options);
    std::thread waiter([&] { s.next_event(std::chrono::seconds(idle_seconds + 2)); });
    // The waiter settles into its wait before counting starts.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const long before = OtherThreadsSwitches();
    std::this_thread::sleep_for(std::chrono::seconds(idle_seconds));
    const long woke = OtherThreadsSwitches() - before;
    waiter.join();
    std::printf(
        "waiting in next_event with nothing coming: %.1f wakeups/s [goal: at most 1] (%ld over "
        "%d s, every thread of the client but the measuring one)\n",
        static_cast<double>(woke) / idle_seconds, woke, idle_seconds);
  }

  std::vector<double> ended, torn_down, told;
  for (int i = 0; i < kills; ++i) {
    qem_client::session s(options);
    Clock::time_point killed, gone;
    std::thread killer([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(10000 + std::rand() % 5000));
      const int end = static_cast<int>(::syscall(SYS_pidfd_open, s.helper_pid(), 0));
      killed = Clock::now();
      ::kill(s.helper_pid(), SIGKILL);
      pollfd ended_fd = {end, POLLIN, 0};
      ::poll(&ended_fd, 1, -1);
      gone = Clock::now();
      ::close(end);
    });
    auto e = s.next_event(std::chrono::seconds(30));
    const auto got = Clock::now();
    killer.join();
    if (!e || e->what != qem_client::event::kind::helper_ended) {
      std::fprintf(stderr, "client_wait_bench: kill %d brought no helper_ended\n", i);
      return 1;
    }
    ended.push_back(std::chrono::duration<double, std::milli>(got - killed).count());
    torn_down.push_back(std::chrono::duration<double, std::milli>(gone - killed).count());
    told.push_back(std::chrono::duration<double, std::milli>(got - gone).count());
  }
  std::printf(
      "helper killed with SIGKILL to helper_ended in next_event: median %.2f ms [goal: at most "
      "5], max %.2f ms (%d kills)\n"
      "  of which the kernel's tearing down: median %.2f ms; the library's telling: median %.2f "
      "ms, max %.2f ms\n",
      Median(ended), *std::max_element(ended.begin(), ended.end()), kills, Median(torn_down),
      Median(told), *std::max_element(told.begin(), told.end()));
  return 0;
}
