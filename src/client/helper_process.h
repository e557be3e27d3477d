#pragma once
// The helper as a child process of the starting application: started with posix_spawn, its
// standard output and error read through a pipe by a thread of its own (each line passed on to
// our stderr, and the last ones kept so that a failed start can say what the helper said), its
// end told through a descriptor (a process descriptor on Linux, a kernel event queue on macOS)
// so that a caller can sleep until it comes, and, when it has to go, reaped within a time limit.

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qem_client {

class helper_process {
 public:
  // Starts `argv[0]` with the arguments and this process's environment; its standard input is
  // /dev/null, its standard output and error go to the relay. When `relay` is true each line it
  // writes is passed on to our stderr as it comes. Never blocks on the child. Throws
  // std::system_error (with the errno: ENOENT, EACCES, ENOEXEC, ...) when it can't be started;
  // then no process and no thread is left.
  helper_process(const std::vector<std::string>& argv, bool relay);
  // Ends the process as end() does with a limit of 5 s, if it still runs, and the relay thread.
  ~helper_process();
  helper_process(const helper_process&) = delete;
  helper_process& operator=(const helper_process&) = delete;

  pid_t pid() const { return pid_; }
  // Polls readable from the moment the process has ended (and stays so), for a caller that sleeps
  // on many things at once; -1 where the system can't tell, and the caller must look at status().
  int end_descriptor() const { return end_fd_; }
  // Looks, without waiting, whether the process has ended, and reaps it if it has. Once it has
  // ended: its exit status, 128 + the signal that ended it, or -1 when the status was lost
  // (somebody else reaped it). nullopt while it runs.
  std::optional<int> status();
  // Waits up to `limit` for the process to end by itself; then sends SIGTERM, and SIGKILL after
  // one more second. Always reaps it; gives the status as status() does.
  int end(std::chrono::milliseconds limit);

  // The lines the process wrote to its standard output and error, the last 50 that are not
  // blank, oldest first. Safe to call at any time.
  std::vector<std::string> said() const;
  // Waits up to `limit` until the process's output has ended (it and every process that
  // inherited the pipe have closed it) and every line of it is in said(); true when it has.
  bool output_ended(std::chrono::milliseconds limit) const;

 private:
  void relay_loop(int fd, int stop_fd);
  // Waits up to `limit` for the process to end; true when it has.
  bool wait_for_end(std::chrono::milliseconds limit);

  pid_t pid_ = -1;
  int end_fd_ = -1;
  std::optional<int> status_;
  bool relay_ = true;
  int stop_read_ = -1;  // the relay thread's stop signal; both ends closed after it has ended
  int stop_write_ = -1;
  std::thread reader_;
  mutable std::mutex said_lock_;
  mutable std::condition_variable said_end_;
  std::deque<std::string> said_;
  bool output_ended_ = false;
};

}  // namespace qem_client
