#pragma once
// session: the starting application's side of one helper. It picks the names, holds the
// stay-alive lock, starts the helper and waits until the helper says that it serves; then it
// sends commands on the command channel and is the one receiver of the reply channel. When it
// goes, it lets go of the stay-alive lock, and the helper quits.
//
// Use from one thread. Every wait has a time limit except a send, which waits (trying at once,
// then backing off 33 to 65 ms) while the helper holds the command channel's entry lock, as
// every party of a channel does; the helper holds it only for a moment.

#include <sys/types.h>

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "client/command.h"
#include "client/event.h"
#include "client/helper_process.h"
#include "client/session_names.h"
#include "platform/change_watch.h"

namespace qem_client {

struct launch_options {
  // The helper executable; "" means the one find_helper() finds (beside the running program,
  // named by QEM_UTIL_HELPER, or installed).
  std::string helper{};
  // The names to use; nullopt picks unique ones (and the session removes their files when it
  // ends). Given names are checked as refusal(session_names) does.
  std::optional<session_names> names{};
  // How long the helper may take to say that it serves.
  std::chrono::milliseconds launch_limit{15000};
  // How long the helper may take to quit once let go, before it is ended by a signal.
  std::chrono::milliseconds quit_limit{5000};
  // Pass each line that the helper writes on to our stderr as it comes.
  bool relay_helper_output = true;
};

// Why a helper could not be launched. what() is one line that says it plainly.
class launch_error : public std::runtime_error {
 public:
  enum class reason {
    bad_names,       // a given name is refused; nothing was touched
    files_unusable,  // a lock or channel can't be had (folder not writable, or taken)
    missing,         // the helper file isn't there
    not_executable,  // it is there but can't be run
    exited,          // it ended before it served; exit_status and helper_said tell more
    no_display,      // it ended because it could not open a display
    timed_out,       // it did not serve within the limit; it was ended
  };
  launch_error(reason why, const std::string& message, int exit_status = -1,
               std::string helper_said = "")
      : std::runtime_error(message),
        why(why),
        exit_status(exit_status),
        helper_said(std::move(helper_said)) {}
  reason why;
  int exit_status;          // of exited and no_display: as helper_process::status gives it
  std::string helper_said;  // the helper's last line of output that bears on it, or ""
};

// Thrown by a send after the helper has ended; nothing was sent.
class helper_gone : public std::runtime_error {
 public:
  explicit helper_gone(int exit_status)
      : std::runtime_error("the helper has ended (status " + std::to_string(exit_status) + ")"),
        exit_status(exit_status) {}
  int exit_status;
};

class session {
 public:
  // Launches a helper: checks the names, takes the stay-alive lock, opens the reply channel,
  // starts the helper and blocks until it holds its launch lock, at most launch_limit. Throws
  // launch_error saying why when it can't; then no process, lock or file of it is left.
  explicit session(const launch_options& options = {});
  // Lets go: releases the stay-alive lock, waits up to quit_limit for the helper to quit (it
  // does so within two of its 25 ms ticks), ends it by SIGTERM and then SIGKILL if it doesn't,
  // and reaps it. Removes the files of names it picked itself. Never throws.
  ~session();
  session(const session&) = delete;
  session& operator=(const session&) = delete;

  const session_names& names() const { return names_; }
  pid_t helper_pid() const { return helper_->pid(); }

  // Sends one command. Throws command_refused (nothing sent) for a command that refusal()
  // refuses, helper_gone when the helper has ended, platform::IOException when the channel
  // can't be written. Blocks only while the helper holds the channel's entry lock.
  void send(const command& c);
  // Sends a JSON text as it is, once json_refusal() finds nothing wrong with it; throws as
  // send does.
  void send_json(const std::string& text);
  // Waits up to `limit` until the helper has taken every command sent so far off the channel;
  // true when it has. Gives false at once when the helper has ended with commands unread.
  bool flush(std::chrono::milliseconds limit);

  // The next event, without waiting for anybody: a reply that has arrived, else, once the
  // helper has ended and every reply it sent has been handed out, helper_ended (again on each
  // call), else nullopt. Throws platform::IOException when the reply channel can't be read.
  std::optional<event> poll();
  // The same, waiting up to `limit` for something to arrive: nullopt only when the limit passed
  // with no reply and the helper still running. Sleeps until the helper writes a reply (where
  // the platform tells of writes to a file; see platform::ChangeWatch) or 5 ms pass, whichever
  // comes first, so that a reply is handed out at once and the helper's end within 5 ms.
  std::optional<event> next_event(std::chrono::milliseconds limit);

  // Whether the helper still runs (looked at without waiting), and its status once it ended.
  bool helper_running() { return !helper_->status(); }
  std::optional<int> helper_status() { return helper_->status(); }
  // The helper's last lines of output, oldest first.
  std::vector<std::string> helper_output() const { return helper_->said(); }

 private:
  void start(const launch_options& options);
  void await_launch(std::chrono::milliseconds limit);
  // Moves every whole reply waiting on the channel into `pending_`; `wait` takes the entry lock
  // even when the helper holds it for a moment.
  void take_replies(bool wait);
  void remove_own_files() noexcept;

  session_names names_;
  bool own_names_ = false;
  std::chrono::milliseconds quit_limit_;
  std::shared_ptr<lock_file> stay_alive_;
  std::shared_ptr<many_to_one::receiver> replies_;
  std::shared_ptr<many_to_one::sender> commands_;
  std::unique_ptr<helper_process> helper_;
  std::deque<event> pending_;
  // Told when the helper writes to the reply channel's data file.
  platform::ChangeWatch reply_watch_;
};

}  // namespace qem_client
