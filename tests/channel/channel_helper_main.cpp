// A small program that the cross-process tests start: it takes a lock and holds it until it is
// killed.
//
//   channel_helper hold-lock LOCK READY [spawn]   take LOCK (and start a sleeping child), write
//                                                 READY (the child's pid, or 0), wait to be killed
//
// Exit status 2 on bad usage, 6 when the child can't be started.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"

namespace {

int HoldLock(const std::string& lock_path, const std::string& ready, bool spawn) {
  auto lock = lock_file::occupy(platform::FolderItem(lock_path), log_file::make_null());
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
  {
    std::ofstream out(ready + ".part", std::ios::trunc);
    out << child;
  }
  std::rename((ready + ".part").c_str(), ready.c_str());  // never seen half-written
  for (;;) ::pause();
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if ((args.size() == 3 || args.size() == 4) && args[0] == "hold-lock") {
    return HoldLock(args[1], args[2], args.size() == 4);
  }
  std::fprintf(stderr, "channel_helper: bad usage\n");
  return 2;
}
