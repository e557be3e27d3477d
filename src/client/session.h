#pragma once
// session: the starting application's side of one helper. It picks the names, holds the
// stay-alive lock, starts the helper and waits until the helper says that it serves; then it
// sends commands on the command channel and is the one receiver of the reply channel. When it
// goes, it lets go of the stay-alive lock, and the helper quits.
//
// Use from one thread. A wait for events sleeps until something happens: a reply is written, the
// helper ends, the limit passes. The launch and a flush look every 5 ms for what nothing tells of
// (the helper's launch lock, its taking of the commands), and wake at once when the helper ends.
// A send waits (trying at once, then backing off 33 to 65 ms) while the helper holds the command
// channel's entry lock, as every party of a channel does; the helper holds it only for a moment.
// Everything it throws is a qem_client::error.

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "client/command.h"
#include "client/error.h"
#include "client/event.h"
#include "client/session_names.h"

namespace qem_client {

struct launch_options {
  // The helper executable; "" means the one the library finds: "qem_util" beside the running
  // program, else the file that QEM_UTIL_HELPER names, else the installed one.
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

class session {
 public:
  // Launches a helper: checks the names, takes the stay-alive lock, opens the reply channel,
  // starts the helper and blocks until it holds its launch lock, at most launch_limit. Throws
  // launch_error saying why when it can't; then no process, lock or file of it is left.
  explicit session(const launch_options& options = {});
  // Lets go: releases the stay-alive lock, waits up to quit_limit for the helper to quit (it
  // quits as soon as it notices), ends it by SIGTERM and then SIGKILL if it doesn't, and reaps it.
  // Removes the files of names it picked itself. Never throws.
  ~session();
  session(const session&) = delete;
  session& operator=(const session&) = delete;

  const session_names& names() const;
  pid_t helper_pid() const;

  // Sends one command. Throws command_refused (nothing sent) for a command that refusal()
  // refuses, helper_gone when the helper has ended, channel_error when the channel can't be
  // written. Blocks only while the helper holds the channel's entry lock.
  void send(const command& c);
  // Sends a JSON text as it is, once json_refusal() finds nothing wrong with it; throws as
  // send does.
  void send_json(const std::string& text);
  // Waits up to `limit` until the helper has taken every command sent so far off the channel;
  // true when it has. Gives false at once when the helper has ended with commands unread.
  // Throws channel_error when the channel can't be looked at.
  bool flush(std::chrono::milliseconds limit);

  // The next event, without waiting for anybody: a reply that has arrived, else, once the
  // helper has ended and every reply it sent has been handed out, helper_ended (again on each
  // call), else nullopt. Throws channel_error when the reply channel can't be read.
  std::optional<event> poll();
  // The same, sleeping up to `limit` (nullopt: for as long as it takes) until something comes:
  // nullopt only when the limit passed with no reply and the helper still running. It wakes
  // when the helper writes a reply and when the helper ends, and at no other time. It also
  // gives nullopt as soon as one of `wake_on` (descriptors of the caller's, such as its input
  // or the reading end of a pipe that a signal handler writes to) polls readable, so that one
  // thread can sleep on both. A signal does not end the wait.
  std::optional<event> next_event(std::optional<std::chrono::milliseconds> limit,
                                  std::span<const int> wake_on = {});

  // Whether the helper still runs (looked at without waiting), and its status once it ended:
  // its exit status, 128 + the signal that ended it, or -1 when it was lost.
  bool helper_running();
  std::optional<int> helper_status();
  // The helper's last lines of output, oldest first.
  std::vector<std::string> helper_output() const;

 private:
  class impl;
  std::unique_ptr<impl> impl_;
};

}  // namespace qem_client
