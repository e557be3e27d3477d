// The message half of the command server: the receiving end of the command channel, the read
// step of each tick and of each wake-up, and the dispatch of one message to the objects it names.

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "channel/log_file.h"
#include "json/tree_dictionary.h"
#include "platform/clock.h"
#include "platform/exceptions.h"
#include "platform/run_loop.h"
#include "platform/text.h"
#include "server/message_forwarder_many_to_one.h"
#include "server/qem_util.h"

namespace {

// How long a prober may hold a free receiver lock before a second receiver is the verdict.
constexpr double kReceiverGraceMicroseconds = 250'000;
// The part of a tick that processing may use before the rest waits for the next tick.
constexpr double kTickBudgetMicroseconds = 10'000;
// A woken step that found a sender inside the channel tries again after 1 ms, then after twice
// as long each time, never after more than this.
constexpr int kLongestRetryMilliseconds = 25;

// One line on stderr, "qem_util: " and the text, with any line break in it made a blank.
void Say(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  text = "qem_util: " + text + "\n";
  std::fwrite(text.data(), 1, text.size(), stderr);
  std::fflush(stderr);
}

// The text with each NUL written as the escape that brought it.
std::string Printable(const std::string& text) {
  std::string shown;
  for (char c : text) {
    if (c == '\0') {
      shown += "\\u0000";
    } else {
      shown += c;
    }
  }
  return shown;
}

// An envelope member as text; "" when absent.
std::string Member(const platform::Dictionary& message, std::string_view key) {
  return message.Lookup(key, platform::Variant(std::string())).StringValue();
}

}  // namespace

bool qem_util::open_channel() {
  try {
    const double give_up = platform::Microseconds() + kReceiverGraceMicroseconds;
    sock = many_to_one::receiver::make(channel, log_file::make_null());
    while (!sock && platform::Microseconds() < give_up) {
      platform::SleepCurrent(10);
      sock = many_to_one::receiver::make(channel, log_file::make_null());
    }
    if (!sock) {
      Say("another process is the receiver of channel \"" + channel + "\"; not serving it");
      platform::Quit(kReceiverTaken);
      return false;
    }
    // What an earlier run left in the channel is dropped: the server starts empty.
    sock->op()->purge();
  } catch (const platform::Exception& error) {
    Say("channel \"" + channel + "\" can't be used: " + error.what());
    sock = nullptr;
    platform::Quit(kChannelUnusable);
    return false;
  }
  return true;
}

int qem_util::read_messages(double tick_start) {
  // One attempt, never a wait: while somebody else is in the channel, the messages already
  // taken are handled and the file is read on a later tick. While no data file is there the
  // entry lock is not tried at all, which keeps an idle tick to a few system calls.
  int found = 0;
  try {
    if (sock->data_waiting()) {
      if (auto op = sock->try_op()) {
        std::vector<std::string> records = op->read_all();
        found = static_cast<int>(records.size());
        for (std::string& message : records) taken.push_back(std::move(message));
      } else {
        found = kBusy;
      }
    }
    if (channel_failing_) Say("channel \"" + channel + "\" can be read again");
    channel_failing_ = false;
  } catch (const platform::Exception& error) {
    // A cause that stays (a symbolic link at the data file, a folder that can't be entered)
    // fails every tick the same way: it is said once, and the ticks go on trying quietly.
    if (!channel_failing_) {
      Say("channel \"" + channel + "\" can't be read, and is tried again quietly: " + error.what());
    }
    channel_failing_ = true;
  }
  // The entry lock is free again before any message is acted on. The first message of a tick
  // runs whatever the reading cost, so that every tick makes progress.
  for (bool first = true; !taken.empty(); first = false) {
    if (!first && platform::Microseconds() - tick_start >= kTickBudgetMicroseconds) break;
    const std::string message = std::move(taken.front());
    taken.pop_front();
    if (!message.empty()) process(message);
  }
  return found;
}

void qem_util::keep_receiver_lock() {
  std::string why = "another process holds its name";
  bool kept = false;
  try {
    kept = sock->keep_receiver_lock();
  } catch (const platform::Exception& error) {
    why = error.what();
  }
  // Said once when the name is lost and once when it is had again; tried again meanwhile.
  if (kept == !receiver_lock_lost_) return;
  receiver_lock_lost_ = !kept;
  Say(kept ? "the receiver lock of channel \"" + channel + "\" is held again"
           : "the receiver lock of channel \"" + channel +
                 "\" was deleted and can't be taken again, so another receiver may take "
                 "commands: " +
                 why);
}

void qem_util::wake() {
  if (!wake_ || streaming_ || wake_->RunMode() != platform::Timer::Off) return;
  wake_->Period(retry_ms_);
  wake_->RunMode(platform::Timer::Single);
}

void qem_util::woken() {
  ++steps_.woken;
  const int found = read_messages(platform::Microseconds());
  if (found != kBusy) {
    retry_ms_ = 0;
    streaming_ = found > 1;
    // A stream is read by the short tick, and so is a channel folder that went away until it
    // is watched again.
    set_pace();
    return;
  }
  // The write was told before its sender let go of the entry lock, and the letting go is not
  // told: look again in a moment, and after longer moments while the channel stays busy.
  retry_ms_ = std::clamp(2 * retry_ms_, 1, kLongestRetryMilliseconds);
  wake();
}

void qem_util::process(const std::string& msg) {
  const std::shared_ptr<platform::Dictionary> d = JSON::JSONStringToTreeDictionary(msg);
  const std::string obj_id = Member(*d, "obj_id");
  if (obj_id.empty()) return;
  const auto entry = objs.find(obj_id);
  std::shared_ptr<commandable> current = entry == objs.end() ? nullptr : entry->second;
  const std::string command = Member(*d, "cmd");
  if (platform::EqualsPlain(command, "create")) {
    if (platform::EqualsPlain(Member(*d, "type"), "wprogress")) {
      if (obj_id.find('\0') != std::string::npos) {
        Say("create of \"" + Printable(obj_id) +
            "\" refused: an obj_id holding a NUL can't be named in a reply");
        return;
      }
      auto window =
          make_window_
              ? make_window_(obj_id, d,
                             std::make_shared<message_forwarder_many_to_one>(reply_channel))
              : nullptr;
      if (window) {
        // The older window stays open; no message can reach it any more.
        if (current) displaced.push_back(std::move(current));
        current = std::move(window);
      }
    }
    if (current) objs[obj_id] = current;
  } else if (platform::EqualsPlain(command, "delete")) {
    if (current) {
      current->cmd(d);
      objs.erase(obj_id);
      if (give_back_ && give_back_->RunMode() == platform::Timer::Off) {
        give_back_->RunMode(platform::Timer::Single);
      }
    }
  } else if (current) {
    current->cmd(d);
  }
}
