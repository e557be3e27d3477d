// A small program that the cross-process tests start many times over: it takes locks, counts
// under them, and holds them until it is killed.
//
//   channel_helper lock-count LOCK COUNTER N   N times: take LOCK, add one to COUNTER, let go
//   channel_helper hold-lock LOCK READY [spawn] take LOCK (and start a sleeping child), write
//                                               READY (the child's pid, or 0), wait to be killed
//
// Exit status 0 on success, 2 on bad usage, 4 and up for a broken promise seen from inside.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"

namespace {

void WriteReady(const std::string& path, const std::string& content) {
  std::string temp = path + ".part";
  {
    std::ofstream out(temp, std::ios::trunc);
    out << content;
  }
  std::rename(temp.c_str(), path.c_str());  // the test never sees a half-written file
}

std::shared_ptr<lock_file> TakeWithRetry(const platform::FolderItem& file) {
  for (;;) {
    auto lock = lock_file::make(file, log_file::make_null());
    if (lock) return lock;
    ::usleep(static_cast<useconds_t>(50 + std::rand() % 400));
  }
}

int LockCount(const std::string& lock_path, const std::string& counter_path, int rounds) {
  platform::FolderItem file(lock_path);
  for (int i = 0; i < rounds; ++i) {
    auto lock = TakeWithRetry(file);
    struct stat st;
    if (::stat(lock_path.c_str(), &st) != 0) return 4;  // a held lock has its file
    if (st.st_size != 0) return 5;                      // and the file is empty
    // A deliberately non-atomic read, pause, write: only the lock keeps the count exact.
    long value = 0;
    {
      std::ifstream in(counter_path);
      in >> value;
    }
    ::sched_yield();
    {
      std::ofstream out(counter_path, std::ios::trunc);
      out << value + 1;
    }
  }
  return 0;
}

int HoldLock(const std::string& lock_path, const std::string& ready, bool spawn) {
  auto lock = TakeWithRetry(platform::FolderItem(lock_path));
  pid_t child = 0;
  if (spawn) {
    // Until its exec the child shares every descriptor, the lock's included; READY must wait
    // for the exec, which closes the write end of this pipe (end of file for the read end).
    int pipe_ends[2];
    if (::pipe(pipe_ends) != 0 || ::fcntl(pipe_ends[1], F_SETFD, FD_CLOEXEC) != 0) return 6;
    child = ::fork();
    if (child == 0) {
      ::execl("/bin/sleep", "sleep", "60", static_cast<char*>(nullptr));
      ::_exit(127);
    }
    ::close(pipe_ends[1]);
    char byte;
    while (::read(pipe_ends[0], &byte, 1) > 0) {
    }
  }
  WriteReady(ready, std::to_string(child));
  for (;;) ::pause();
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  std::srand(static_cast<unsigned>(::getpid()));
  if (args.size() == 4 && args[0] == "lock-count") {
    return LockCount(args[1], args[2], std::atoi(args[3].c_str()));
  }
  if ((args.size() == 3 || args.size() == 4) && args[0] == "hold-lock") {
    return HoldLock(args[1], args[2], args.size() == 4);
  }
  std::fprintf(stderr, "channel_helper: bad usage\n");
  return 2;
}
