// Measures, on the real executable, offscreen, what the helper gives back after trouble:
//  - its resident memory idle, with N progress windows open (1,500 unless told), and 2 s after
//    they were all deleted [goal: after within 60 MB of before];
//  - the lines it writes on stderr in S seconds (10 unless told) while a symbolic link stands
//    in the place of its command channel's data file [goal: at most 2], and that it serves again
//    once the link is gone.
// Usage: recovery_bench [windows] [seconds]
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>

#include "channel/lock_file.h"
#include "channel/many_to_one_sender.h"
#include "support/private_folders.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// The helper on channel "bench", its stderr into `said`.
pid_t StartHelper(const fs::path& said) {
  pid_t pid = ::fork();
  if (pid == 0) {
    std::freopen(said.c_str(), "w", stderr);
    const char* args[] = {QEM_UTIL_PATH, "--stay-alive-key=alive", "--channel=bench",
                          "--launch-key=up", nullptr};
    ::execv(args[0], const_cast<char* const*>(args));
    ::_exit(127);
  }
  return pid;
}

std::string Slurp(const fs::path& path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

long RssKb(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  }
  return -1;
}

double Mb(long kb) {
  return static_cast<double>(kb) / 1024.0;
}

// A create that the helper reports on stderr, naming `id`, once it has handled all before it.
std::string Telltale(const std::string& id) {
  return R"({"obj_id":")" + id + R"(","cmd":"create","type":"wprogress","style":{"x":1}})";
}

// Sends the messages in one critical section, then a telltale, and waits until the helper has
// handled them all.
bool SendAndWait(const std::vector<std::string>& messages, const std::string& mark,
                 const fs::path& said) {
  {
    auto op = std::make_shared<many_to_one::sender>("bench", log_file::make_null())->op();
    for (const auto& message : messages) op->write(message);
    op->write(Telltale(mark));
  }
  const auto deadline = std::chrono::steady_clock::now() + 300s;
  while (Slurp(said).find('"' + mark + '"') == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(20ms);
  }
  return true;
}

std::size_t Lines(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace

int main(int argc, char** argv) {
  const int windows = argc > 1 ? std::atoi(argv[1]) : 1500;
  const int seconds = argc > 2 ? std::atoi(argv[2]) : 10;
  qem_test::PrivateFolders folders;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  const fs::path said = folders.root() / "stderr.txt";
  auto alive = lock_file::make("alive", log_file::make_null());
  pid_t pid = StartHelper(said);
  while (!fs::exists(folders.tmp() / "up")) std::this_thread::sleep_for(1ms);
  std::this_thread::sleep_for(500ms);
  const long before = RssKb(pid);

  std::vector<std::string> creates, deletes;
  for (int i = 0; i < windows; ++i) {
    const std::string id = std::string("w").append(std::to_string(i));
    creates.push_back(R"({"obj_id":")" + id +
                      R"(","cmd":"create","type":"wprogress","style":3,"title":"Backup",)"
                      R"("message":"Copying 1,204 files","progress":0.25,)"
                      R"("btn_spec":[{"id":"stop","text":"Stop"},{"id":"pause","text":"Pause"}]})");
    deletes.push_back(R"({"obj_id":")" + id + R"(","cmd":"delete"})");
  }
  if (!SendAndWait(creates, "made", said)) return std::puts("the windows never came"), 1;
  const long with = RssKb(pid);
  if (!SendAndWait(deletes, "gone", said)) return std::puts("the deletes were never handled"), 1;
  std::this_thread::sleep_for(2s);
  const long after = RssKb(pid);
  std::printf(
      "RSS: %.1f MB idle, %.1f MB with %d windows, %.1f MB 2 s after deleting them "
      "(%+.1f MB against idle)\n",
      Mb(before), Mb(with), windows, Mb(after), Mb(after - before));

  // The link is planted under the helper; what it writes meanwhile is counted.
  const fs::path data = folders.prefs() / "qem.many_to_one.bench.dir" / "data";
  const std::size_t lines_before = Lines(Slurp(said));
  fs::create_symlink(folders.root() / "elsewhere", data);
  std::ofstream(folders.root() / "elsewhere") << "planted";
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const std::size_t planted = Lines(Slurp(said)) - lines_before;
  fs::remove(data);
  const bool serves = SendAndWait({}, "again", said);
  std::printf(
      "stderr lines in %d s with a symbolic link at the data file: %zu; %s once it is gone\n",
      seconds, planted, serves ? "serves again" : "does NOT serve");
  // What it said about the link, from its planting to the message after it.
  std::istringstream lines(Slurp(said));
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    if (++number > lines_before && line.find("\"again\"") == std::string::npos) {
      std::printf("  %s\n", line.c_str());
    }
  }
  alive.reset();
  int status;
  ::waitpid(pid, &status, 0);
  return 0;
}
