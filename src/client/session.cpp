#include "client/session.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <system_error>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "client/helper_lookup.h"
#include "client/helper_process.h"
#include "client/launch_failure.h"
#include "platform/change_watch.h"
#include "platform/exceptions.h"
#include "platform/folder_item.h"

namespace qem_client {

namespace {

using reason = launch_error::reason;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// How often a wait looks for itself at what nothing tells of: the launch lock while the helper
// starts, the command channel while it is flushed, and replies where they can't be watched (a
// reply channel folder that is gone, a system that tells nothing of a write or of a process's
// end). Each of these waits also wakes at once when the helper ends.
constexpr milliseconds kLook{5};
// A reply found on the channel while the helper was still inside it is looked for again after
// the first, then after the second of these: the helper lets go within a moment, but no write
// tells of it.
constexpr milliseconds kHeldRetry[] = {milliseconds(1), milliseconds(33)};

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

bool Held(const std::string& name) {
  if (!platform::SpecialFolder::Temporary().Child(name).Exists()) return false;
  return lock_file::make(name, log_file::make_null()) == nullptr;
}

int PollLimit(std::optional<milliseconds> limit) {
  return limit ? static_cast<int>(std::min<long long>(limit->count(), INT_MAX)) : -1;
}

// `call()`, with a fault of the channel's files told as the library's own error.
template <typename Call>
auto Guarded(Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const platform::Exception& fault) {
    throw channel_error(fault.what(), fault.ErrorNumber());
  }
}

}  // namespace

class session::impl {
 public:
  explicit impl(const launch_options& options);
  ~impl();

  void send(const std::string& text);
  bool flush(milliseconds limit);
  std::optional<event> poll();
  std::optional<event> next_event(std::optional<milliseconds> limit, std::span<const int> wake_on);

  session_names names;
  std::unique_ptr<helper_process> helper;

 private:
  void start(const launch_options& options);
  void spawn(const std::string& path, bool named, bool relay);
  void await_launch(milliseconds limit);
  // Moves every whole reply waiting on the channel into `pending_`; `wait` takes the entry lock
  // even when the helper holds it for a moment. False when a reply waits that could not be
  // taken because the helper was inside the channel.
  bool take_replies(bool wait);
  void remove_own_files() noexcept;

  bool own_names_ = false;
  milliseconds quit_limit_;
  std::shared_ptr<lock_file> stay_alive_;
  std::shared_ptr<many_to_one::receiver> replies_;
  std::shared_ptr<many_to_one::sender> commands_;
  std::deque<event> pending_;
  // A reply was on the channel at the last look, with the helper inside it.
  bool replies_held_ = false;
  // Told when the helper writes to the reply channel's data file.
  platform::ChangeWatch reply_watch_;
};

session::impl::impl(const launch_options& options) : quit_limit_(options.quit_limit) {
  own_names_ = !options.names;
  names = options.names ? *options.names : session_names::unique();
  if (auto why = refusal(names)) throw launch_error(reason::bad_names, "refused: " + *why);
  try {
    start(options);
  } catch (const platform::Exception& fault) {
    if (helper) helper->end(milliseconds(0));
    remove_own_files();
    throw launch_error(reason::files_unusable, fault.what());
  } catch (...) {
    remove_own_files();
    throw;
  }
}

void session::impl::start(const launch_options& options) {
  const helper_places places = helper_places::of_this_process();
  const std::string path = options.helper.empty() ? find_helper(places) : options.helper;
  if (path.empty()) throw launch_error(reason::missing, "the helper " + not_found(places));
  auto alive = std::make_shared<lock_file>(
      platform::SpecialFolder::Temporary().Child(names.stay_alive_key), log_file::make_null());
  if (alive->failed()) {
    const int error = alive->error_number();
    throw launch_error(
        reason::files_unusable,
        "cannot take the stay-alive lock " + alive->nativepath() + ": " +
            (lock_file::is_contention(error) ? "another process holds it" : std::strerror(error)));
  }
  stay_alive_ = alive;
  if (Held(names.launch_key)) {
    throw launch_error(reason::files_unusable, "the launch lock " + Quoted(names.launch_key) +
                                                   " is held by another process");
  }
  replies_ = many_to_one::receiver::make(names.reply_channel, log_file::make_null());
  if (!replies_) {
    throw launch_error(reason::files_unusable,
                       "another process receives the reply channel " + Quoted(names.reply_channel));
  }
  replies_->op()->purge();
  reply_watch_.Watch(replies_->channel_folder(), "data");
  commands_ = std::make_shared<many_to_one::sender>(names.channel, log_file::make_null());
  spawn(path, options.helper.empty() && path == places.named, options.relay_helper_output);
  await_launch(options.launch_limit);
}

// Whether the helper is there and can be run is told by the start itself, and only by it.
void session::impl::spawn(const std::string& path, bool named, bool relay) {
  try {
    helper = std::make_unique<helper_process>(
        std::vector<std::string>{
            path, "--stay-alive-key=" + names.stay_alive_key, "--channel=" + names.channel,
            "--reply-channel=" + names.reply_channel, "--launch-key=" + names.launch_key},
        relay);
  } catch (const std::system_error& failure) {
    throw start_failure(path, named, failure.code().value());
  }
}

void session::impl::await_launch(milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  for (;;) {
    if (Held(names.launch_key)) return;
    if (auto status = helper->status()) {
      helper->output_ended(milliseconds(1000));
      throw ended_before_serving(*status, helper->said());
    }
    if (Clock::now() >= deadline) {
      helper->end(milliseconds(0));
      throw not_serving_within(limit);
    }
    pollfd ended = {helper->end_descriptor(), POLLIN, 0};
    ::poll(&ended, 1, static_cast<int>(kLook.count()));
  }
}

session::impl::~impl() {
  stay_alive_.reset();
  if (helper) helper->end(quit_limit_);
  remove_own_files();
}

void session::impl::remove_own_files() noexcept {
  stay_alive_.reset();
  replies_.reset();
  if (!own_names_ || (helper && !helper->status())) return;
  // Nobody else knows these names: what the helper or we left is taken away, each file under
  // its own lock, so a lock file goes only when nobody holds it.
  try {
    auto null = log_file::make_null();
    lock_file::make(names.launch_key, null);
    lock_file::make(names.stay_alive_key, null);
    for (const std::string& id : {names.channel, names.reply_channel}) {
      lock_file::make(many_to_one::receiver::make_receiver_mutex(id), null);
      auto sender = std::make_shared<many_to_one::sender>(id, null);
      auto op = sender->op();
      op->data_file().Delete();
      op->folder().Delete();
    }
  } catch (const platform::Exception&) {
    // A folder that can't be used now leaves its files behind; nothing else can be done here.
  }
}

void session::impl::send(const std::string& text) {
  if (auto status = helper->status()) throw helper_gone(*status);
  commands_->op()->write(text);
}

bool session::impl::flush(milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  const platform::FolderItem data = commands_->channel_folder().Child("data");
  for (;;) {
    if (!data.Exists()) return true;
    if (helper->status() || Clock::now() >= deadline) return false;
    pollfd ended = {helper->end_descriptor(), POLLIN, 0};
    ::poll(&ended, 1, static_cast<int>(kLook.count()));
  }
}

bool session::impl::take_replies(bool wait) {
  if (!replies_->data_waiting()) return true;
  auto op = wait ? replies_->op() : replies_->try_op();
  if (!op) return false;
  for (const std::string& text : op->read_all()) {
    if (auto e = event::from_reply(text)) pending_.push_back(std::move(*e));
  }
  return true;
}

std::optional<event> session::impl::poll() {
  if (pending_.empty()) {
    // The status is looked at before the channel, so that replies sent just before the end are
    // handed out before the news of it.
    auto status = helper->status();
    replies_held_ = !take_replies(status.has_value());
    if (pending_.empty()) {
      if (status) return event::ended(*status);
      return std::nullopt;
    }
  }
  event e = std::move(pending_.front());
  pending_.pop_front();
  return e;
}

// Sleeps in poll(2) on the reply channel's watch, the helper's end and the caller's descriptors.
// Nothing is missed: both watches are armed before the channel and the helper are looked at, and
// both stay readable until drained (the end for good), so what comes after the look wakes the
// sleep at once.
std::optional<event> session::impl::next_event(std::optional<milliseconds> limit,
                                               std::span<const int> wake_on) {
  // A plain time point, not an optional one, on which GCC 12 warns falsely at -O1.
  const Clock::time_point deadline = limit ? Clock::now() + *limit : Clock::time_point::max();
  std::size_t held_looks = 0;
  for (;;) {
    if (!reply_watch_.Watching()) reply_watch_.Watch(replies_->channel_folder(), "data");
    if (auto e = poll()) return e;
    std::optional<milliseconds> pause;
    if (replies_held_) {
      pause = kHeldRetry[std::min(held_looks++, std::size(kHeldRetry) - 1)];
    } else {
      held_looks = 0;
    }
    if (reply_watch_.Descriptor() < 0 || !reply_watch_.Watching() || helper->end_descriptor() < 0) {
      pause = std::min(pause.value_or(kLook), kLook);
    }
    if (limit) {
      const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
      if (left <= milliseconds(0)) return std::nullopt;
      pause = std::min(pause.value_or(left), left);
    }
    std::vector<pollfd> watched = {{reply_watch_.Descriptor(), POLLIN, 0},
                                   {helper->end_descriptor(), POLLIN, 0}};
    for (int fd : wake_on) watched.push_back({fd, POLLIN, 0});
    if (::poll(watched.data(), watched.size(), PollLimit(pause)) < 0 && errno != EINTR) {
      throw platform::IOException(
          std::string("Cannot wait for the helper: ") + std::strerror(errno), errno);
    }
    for (std::size_t i = 2; i < watched.size(); ++i) {
      if (watched[i].revents != 0) return std::nullopt;
    }
    if (watched[0].revents != 0) reply_watch_.Drain();
  }
}

session::session(const launch_options& options) : impl_(std::make_unique<impl>(options)) {}

session::~session() = default;

const session_names& session::names() const {
  return impl_->names;
}

pid_t session::helper_pid() const {
  return impl_->helper->pid();
}

void session::send(const command& c) {
  const std::string text = to_json(c);
  Guarded([&] { impl_->send(text); });
}

void session::send_json(const std::string& text) {
  if (auto why = json_refusal(text)) throw command_refused("the text " + *why);
  Guarded([&] { impl_->send(text); });
}

bool session::flush(milliseconds limit) {
  return Guarded([&] { return impl_->flush(limit); });
}

std::optional<event> session::poll() {
  return Guarded([&] { return impl_->poll(); });
}

std::optional<event> session::next_event(std::optional<milliseconds> limit,
                                         std::span<const int> wake_on) {
  return Guarded([&] { return impl_->next_event(limit, wake_on); });
}

bool session::helper_running() {
  return !impl_->helper->status();
}

std::optional<int> session::helper_status() {
  return impl_->helper->status();
}

std::vector<std::string> session::helper_output() const {
  return impl_->helper->said();
}

}  // namespace qem_client
