#pragma once
// qem_util: the command server. Its lifetime half (qem_util.cpp): the tick, the launch lock it
// takes to tell the starting application that it is up, and the watch on the stay-alive lock
// that the starting application holds for as long as it wants the helper. Its message half
// (qem_util_messages.cpp): the receiving end of the command channel, the wake-up when a sender
// writes to it, the table of live objects, and the dispatch of each message to them. It knows a
// window only as a commandable that the maker it is given makes. Main thread only.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "platform/dictionary.h"
#include "platform/folder_watcher.h"
#include "platform/lock_watcher.h"
#include "platform/run_loop.h"
#include "platform/text.h"
#include "server/commandable.h"
#include "server/message_forwarder.h"

class qem_util {
 public:
  // The object table: obj_id to object. Keys compare as dictionary keys do (ASCII case ignored).
  using object_table = std::map<std::string, std::shared_ptr<commandable>, platform::LessPlain>;

  // Makes the object for a "create" of type "wprogress", shows it and gives it, from the obj_id,
  // the whole message and the forwarder of its replies, which the object keeps. Nil: nothing is
  // made.
  using window_maker = std::function<std::shared_ptr<commandable>(
      const std::string& obj_id, const std::shared_ptr<platform::Dictionary>& message,
      std::shared_ptr<message_forwarder> replies)>;

  // The exit statuses of a server that can't serve.
  static constexpr int kReceiverTaken = 3;
  static constexpr int kChannelUnusable = 4;

  // How the server learns that there is something to do. The defaults are the ones it serves
  // with; tests and benchmarks turn a watch off or change a period to see one way alone.
  struct pacing {
    // The period of the tick, in milliseconds, while the helper is not up yet or can't rely on
    // both watches.
    int tick_ms = 25;
    // The period once the launch lock is held and both watches are armed: a safety net that
    // does everything the tick does, for what a watch might miss.
    int safety_net_ms = 1000;
    // Whether a write to the channel's data file runs the message step at once (see wake).
    bool watch_channel = true;
    // Whether a thread waits for the stay-alive lock to be let go, so that the helper quits at
    // once instead of on a tick.
    bool watch_stay_alive = true;
  };
  // How often each step has run since the start, by what ran it.
  struct step_counts {
    std::uint64_t ticks = 0;
    std::uint64_t woken = 0;
    // Ticks run because the stay-alive lock was seen let go.
    std::uint64_t stay_alive_seen = 0;
  };

  // Stores the names and the maker, opens the receiving end of `channel` and purges what an
  // earlier run left in it (which also makes the channel's folder), starts watching its data
  // file and starts the repeating tick; the first tick comes as soon as the run loop is free.
  // The watch on the stay-alive lock starts once the launch lock is held. Blocks only while
  // another process holds the channel's entry lock for the purge. When another process is the
  // channel's receiver (tried again for up to 250 ms, because a prober holds a free receiver lock
  // for a moment), or the channel can't be used at all: one line on stderr, Quit with
  // kReceiverTaken or kChannelUnusable, and no timer, so the launch lock is never taken.
  qem_util(std::string stay_alive_key, std::string channel, std::string reply_channel,
           std::string launch_key, window_maker make_window, pacing pace);
  qem_util(std::string stay_alive_key, std::string channel, std::string reply_channel,
           std::string launch_key, window_maker make_window);
  virtual ~qem_util();
  qem_util(const qem_util&) = delete;
  qem_util& operator=(const qem_util&) = delete;

  // One tick; the timer calls it, and so does the stay-alive lock's watch when it saw the lock
  // let go. Never sleeps and never waits for another process: takes the launch lock if not yet
  // held (then holds it for life); tries the stay-alive lock and calls Quit(0) if it could be
  // had, which means the starting application has let go or died; otherwise makes sure that
  // both watches are armed (a stay-alive watch that failed is tried again at most once a
  // second); then the message step: while the channel's data file is there, one attempt at its
  // entry lock that, when it succeeds, takes every whole message waiting; then messages go to
  // process in their order until none is left or 10 ms of the tick are used (the first always
  // runs); the rest wait for the next tick. An exception from process leaves the tick (the event
  // guard reports it); the message that raised it is gone, the others wait. A channel that can't be
  // entered or read is said once on stderr when it begins and once when it ends, and tried
  // again on every tick meanwhile. A channel folder that went away is watched again once it is
  // back. Once a second the tick also makes sure that the launch lock and the receiver lock
  // still carry their names: a lock whose file was deleted (a cleaner of the folder) is taken
  // again under its name, so the helper stays visibly up and the one receiver of its channel.
  // Last, the tick sets its own period: the safety net once the launch lock is held and both
  // watches are armed, no stream is being read and no message taken waits; the short period
  // otherwise.
  void poll();
  // The tick's period now, in milliseconds.
  int tick_period() const { return timer_ ? timer_->Period() : 0; }

  // The wake-up, which the watch calls whenever the channel's data file is made or written to: the
  // message step is to run as soon as the run loop is free. It never runs inside this call, and
  // changes that come before it runs add nothing. When that step finds a sender still inside the
  // channel, it tries again 1 ms later, then after twice as long each time, up to 25 ms, until it
  // gets in. When it takes more than one message, senders write faster than wake-ups take their
  // messages one by one, and a helper that entered the channel at every write would make them
  // back off 33 to 65 ms whenever they met it there: wake-ups then do nothing until a tick finds
  // the channel empty, and the tick reads alone. Nothing depends on a wake-up: the tick reads
  // whatever one missed.
  void wake();
  const step_counts& steps() const { return steps_; }

  // Dispatches one message, the JSON text of one command, by its "obj_id", "cmd" and "type"
  // (words compared ignoring case). No obj_id: dropped. "create" of type "wprogress": a new
  // window, shown, entered under obj_id; an older window under that id stays open but is no
  // longer addressable. An obj_id that holds a NUL can't be named in a reply, whose records a
  // NUL ends: its "create" is refused with one line on stderr. "create" of another type:
  // nothing new. "delete": the object's cmd, then its entry goes, and soon after the memory it
  // freed goes back to the system. Any other cmd: the object's cmd. Unknown ids do nothing.
  // Answers nothing.
  // Throws RuntimeException for JSON nested too deeply and TypeMismatchException for an
  // envelope member that is an object or array; nothing has changed then.
  void process(const std::string& msg);

  // The live objects, for reading.
  const object_table& objects() const { return objs; }

  // The channel id for replies, given to each window's forwarder; may be empty.
  std::string reply_channel;

 private:
  // The channel side of the constructor: the receiver and its purge. False when the server
  // can't serve (reported and Quit called).
  bool open_channel();
  // The message step, begun at `tick_start` (microseconds). Gives the number of messages it took
  // off the channel, or kBusy when some waited but somebody else held the channel's entry lock.
  static constexpr int kBusy = -1;
  int read_messages(double tick_start);
  // The message step that wake asked for.
  void woken();
  // Takes the receiver lock again when its file was deleted (see poll).
  void keep_receiver_lock();
  // Arms the watches that are not; `retry_failed` also the stay-alive watch after a failure.
  void arm_watches(bool retry_failed);
  // What the stay-alive lock's watch saw: let go, the tick's own attempt decides; a watch that
  // failed leaves it to the short tick.
  void stay_alive_seen(platform::LockWatch::Seen seen);
  // Sets the tick's period from what the watches can be relied on for (see poll).
  void set_pace();

  // Declared in the reverse of the order of release: the launch lock goes first, then the
  // objects, then the receiver (and with it the receiver lock), then the watcher and the timers.
  std::unique_ptr<platform::Timer> timer_;
  std::unique_ptr<platform::Timer> first_tick_;
  // Runs the woken step, once; running while one is due.
  std::unique_ptr<platform::Timer> wake_;
  // Hands freed memory back to the system a moment after windows were deleted, once for many.
  std::unique_ptr<platform::Timer> give_back_;
  std::unique_ptr<platform::FolderWatcher> watcher_;
  std::unique_ptr<platform::LockWatcher> stay_alive_watch_;
  window_maker make_window_;
  pacing pace_;
  // Set while the stay-alive lock's file can't be waited on.
  bool stay_alive_watch_failed_ = false;
  // The pause before a woken step tries a busy channel again; 0 while it is not busy.
  int retry_ms_ = 0;
  // Set while senders write faster than wake-ups take their messages (see wake).
  bool streaming_ = false;
  // Set while the channel can't be read, and while another process holds the receiver lock's
  // name: said when it begins and when it ends.
  bool channel_failing_ = false;
  bool receiver_lock_lost_ = false;
  // When the next tick looks whether the lock files still carry their names (microseconds).
  double next_lock_check_ = 0;
  step_counts steps_;
  std::shared_ptr<many_to_one::receiver> sock;
  // Messages taken off the channel and not yet processed, oldest first.
  std::deque<std::string> taken;
  // Windows that a second "create" with their obj_id displaced: open, unaddressable.
  std::vector<std::shared_ptr<commandable>> displaced;
  object_table objs;
  std::shared_ptr<lock_file> launched_signal;
  std::string launch_key;
  std::string stay_alive_key;
  std::string channel;
};
