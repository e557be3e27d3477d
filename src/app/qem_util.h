#pragma once
// qem_util: the command server. Its lifetime half (qem_util.cpp): the polling timer, the launch
// lock it takes to tell the starting application that it is up, and the watch on the stay-alive
// lock that the starting application holds for as long as it wants the helper. Its message half
// (server/qem_util_messages.cpp): the receiving end of the command channel, the table of live
// objects, and the dispatch of each message to them. Main thread only.

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "platform/run_loop.h"
#include "platform/text.h"
#include "server/commandable.h"

class qem_util {
 public:
  // The object table: obj_id to object. Keys compare as dictionary keys do (ASCII case ignored).
  using object_table = std::map<std::string, std::shared_ptr<commandable>, platform::LessPlain>;

  // The exit statuses of a server that can't serve.
  static constexpr int kReceiverTaken = 3;
  static constexpr int kChannelUnusable = 4;

  // Stores the names, opens the receiving end of `channel` and purges what an earlier run left
  // in it, then starts the 25 ms repeating timer; the first tick comes as soon as the run loop is
  // free. Blocks only while another process holds the channel's entry lock for the purge.
  // When another process is the channel's receiver (tried again for up to 250 ms, because a
  // prober holds a free receiver lock for a moment), or the channel can't be used at all: one
  // line on stderr, Quit with kReceiverTaken or kChannelUnusable, and no timer, so the launch
  // lock is never taken.
  qem_util(std::string stay_alive_key, std::string channel, std::string reply_channel,
           std::string launch_key);
  virtual ~qem_util();
  qem_util(const qem_util&) = delete;
  qem_util& operator=(const qem_util&) = delete;

  // One tick; the timer calls it. Never sleeps and never waits for another process: takes the
  // launch lock if not yet held (then holds it for life); tries the stay-alive lock and calls
  // Quit(0) if it could be had, which means the starting application has let go or died; then
  // the message step: while the channel's data file is there, one attempt at its entry lock
  // that, when it succeeds, takes every whole message waiting; then messages go to process in
  // their order until none is left or 10 ms of the tick are used (the first always runs); the
  // rest wait for the next tick. Exceptions, from process or from a channel that can't be entered,
  // leave the tick (the event guard reports them); a message that raised one is gone, the others
  // wait.
  void poll();

  // Dispatches one message, the JSON text of one command, by its "obj_id", "cmd" and "type"
  // (words compared ignoring case). No obj_id: dropped. "create" of type "wprogress": a new
  // window, shown, entered under obj_id; an older window under that id stays open but is no
  // longer addressable. "create" of another type: nothing new. "delete": the object's cmd, then
  // its entry goes. Any other cmd: the object's cmd. Unknown ids do nothing. Answers nothing.
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
  // The message step of a tick, begun at `tick_start` (microseconds).
  void read_messages(double tick_start);

  // Declared in the reverse of the order of release: the launch lock goes first, then the
  // objects, then the receiver (and with it the receiver lock), then the timers.
  std::unique_ptr<platform::Timer> timer_;
  std::unique_ptr<platform::Timer> first_tick_;
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
