// Measures, on the real executable:
//  - the time from exec to the launch lock being taken, median of 20 starts;
//  - the CPU time per second and the resident memory of an idle helper over 10 s.
// Usage: lifetime_bench [starts] [idle seconds]
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "channel/lock_file.h"
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

// Clock ticks of user plus system time of a process, from /proc.
long CpuTicks(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
  std::string content((std::istreambuf_iterator<char>(in)), {});
  std::istringstream fields(content.substr(content.rfind(')') + 2));
  std::string field;
  long utime = 0, stime = 0;
  for (int i = 3; i <= 15 && fields >> field; ++i) {
    if (i == 14) utime = std::stol(field);
    if (i == 15) stime = std::stol(field);
  }
  return utime + stime;
}

std::string StatusLine(pid_t pid, const std::string& key) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(key, 0) == 0) return line;
  }
  return key + " ?";
}

}  // namespace

int main(int argc, char** argv) {
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
  long ticks_before = CpuTicks(pid);
  auto begin = Clock::now();
  std::this_thread::sleep_for(std::chrono::seconds(idle_seconds));
  long ticks = CpuTicks(pid) - ticks_before;
  double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
  double cpu_ms = 1000.0 * static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
  std::printf("idle helper: %.2f ms CPU per second over %.1f s; %s; %s\n", cpu_ms / seconds,
              seconds, StatusLine(pid, "VmRSS").c_str(), StatusLine(pid, "VmHWM").c_str());
  alive.reset();
  int status;
  ::waitpid(pid, &status, 0);
  return 0;
}
