#include "client/session.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <thread>

#include "client/helper_lookup.h"
#include "platform/exceptions.h"
#include "platform/folder_item.h"

namespace qem_client {

namespace {

using reason = launch_error::reason;
using std::chrono::milliseconds;

constexpr milliseconds kLook{5};
// How soon a reply that was still being written is looked for again.
constexpr milliseconds kRetry{1};

std::string Quoted(const std::string& text) {
  return "\"" + text + "\"";
}

// What the helper's output says about a display it could not open, or "".
std::string DisplayComplaint(const std::vector<std::string>& said) {
  for (const std::string& line : said) {
    if (line.find("could not connect to display") != std::string::npos ||
        line.find("no Qt platform plugin could be initialized") != std::string::npos ||
        line.find("Failed to create wl_display") != std::string::npos) {
      return line;
    }
  }
  return "";
}

std::string DisplayAdvice() {
  const char* display = std::getenv("DISPLAY");
  std::string where = display && *display ? "DISPLAY=" + std::string(display) + " can't be reached"
                                          : "DISPLAY is not set";
  return where + "; run it on a desktop, or set QT_QPA_PLATFORM=offscreen to run without one";
}

std::string Seconds(milliseconds limit) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", static_cast<double>(limit.count()) / 1000.0);
  return text;
}

bool Held(const std::string& name) {
  if (!platform::SpecialFolder::Temporary().Child(name).Exists()) return false;
  return lock_file::make(name, log_file::make_null()) == nullptr;
}

}  // namespace

session::session(const launch_options& options) : quit_limit_(options.quit_limit) {
  own_names_ = !options.names;
  names_ = options.names ? *options.names : session_names::unique();
  if (auto why = refusal(names_)) throw launch_error(reason::bad_names, "refused: " + *why);
  try {
    start(options);
  } catch (const platform::Exception& error) {
    if (helper_) helper_->end(milliseconds(0));
    remove_own_files();
    throw launch_error(reason::files_unusable, error.what());
  } catch (...) {
    remove_own_files();
    throw;
  }
}

void session::start(const launch_options& options) {
  const helper_places places = helper_places::of_this_process();
  const std::string path = options.helper.empty() ? find_helper(places) : options.helper;
  if (path.empty()) throw launch_error(reason::missing, "the helper " + not_found(places));
  struct stat info;
  if (::stat(path.c_str(), &info) != 0) {
    // A helper that the variable named is told as such: the setting is what to fix.
    const bool named = options.helper.empty() && path == places.named;
    const std::string by = named ? std::string(" (named by ") + kHelperVariable + ")" : "";
    throw launch_error(reason::missing, "the helper " + Quoted(path) + " is missing" + by);
  }
  if (!S_ISREG(info.st_mode) || ::access(path.c_str(), X_OK) != 0) {
    throw launch_error(reason::not_executable,
                       "the helper " + Quoted(path) + " is no executable file");
  }
  auto alive = std::make_shared<lock_file>(
      platform::SpecialFolder::Temporary().Child(names_.stay_alive_key), log_file::make_null());
  if (alive->failed()) {
    const int error = alive->error_number();
    throw launch_error(
        reason::files_unusable,
        "cannot take the stay-alive lock " + alive->nativepath() + ": " +
            (lock_file::is_contention(error) ? "another process holds it" : std::strerror(error)));
  }
  stay_alive_ = alive;
  if (Held(names_.launch_key)) {
    throw launch_error(reason::files_unusable, "the launch lock " + Quoted(names_.launch_key) +
                                                   " is held by another process");
  }
  replies_ = many_to_one::receiver::make(names_.reply_channel, log_file::make_null());
  if (!replies_) {
    throw launch_error(reason::files_unusable, "another process receives the reply channel " +
                                                   Quoted(names_.reply_channel));
  }
  replies_->op()->purge();
  reply_watch_.Watch(replies_->channel_folder(), "data");
  commands_ = std::make_shared<many_to_one::sender>(names_.channel, log_file::make_null());
  try {
    helper_ = std::make_unique<helper_process>(
        std::vector<std::string>{
            path, "--stay-alive-key=" + names_.stay_alive_key, "--channel=" + names_.channel,
            "--reply-channel=" + names_.reply_channel, "--launch-key=" + names_.launch_key},
        options.relay_helper_output);
  } catch (const std::system_error& error) {
    const int code = error.code().value();
    throw launch_error(code == ENOENT ? reason::missing : reason::not_executable,
                       "the helper " + Quoted(path) + " can't be started: " + std::strerror(code));
  }
  await_launch(options.launch_limit);
}

void session::await_launch(milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (Held(names_.launch_key)) return;
    if (auto status = helper_->status()) {
      helper_->output_ended(milliseconds(1000));
      const auto said = helper_->said();
      const std::string last = said.empty() ? "" : said.back();
      const std::string display = DisplayComplaint(said);
      if (!display.empty()) {
        throw launch_error(
            reason::no_display,
            "the helper could not open a display (" + display + "): " + DisplayAdvice(), *status,
            display);
      }
      std::string message = *status > 128 ? "the helper was ended by signal " +
                                                std::to_string(*status - 128) + " before it served"
                                          : "the helper exited with status " +
                                                std::to_string(*status) + " before it served";
      if (!last.empty()) message += ": " + last;
      throw launch_error(reason::exited, message, *status, last);
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      helper_->end(milliseconds(0));
      throw launch_error(reason::timed_out,
                         "the helper did not serve within " + Seconds(limit) + " s and was ended");
    }
    std::this_thread::sleep_for(kLook);
  }
}

session::~session() {
  stay_alive_.reset();
  if (helper_) helper_->end(quit_limit_);
  remove_own_files();
}

void session::remove_own_files() noexcept {
  stay_alive_.reset();
  replies_.reset();
  if (!own_names_ || (helper_ && !helper_->status())) return;
  // Nobody else knows these names: what the helper or we left is taken away, each file under
  // its own lock, so a lock file goes only when nobody holds it.
  try {
    auto null = log_file::make_null();
    lock_file::make(names_.launch_key, null);
    lock_file::make(names_.stay_alive_key, null);
    for (const std::string& id : {names_.channel, names_.reply_channel}) {
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

void session::send(const command& c) {
  const std::string text = to_json(c);
  if (auto status = helper_->status()) throw helper_gone(*status);
  commands_->op()->write(text);
}

void session::send_json(const std::string& text) {
  if (auto why = json_refusal(text)) throw command_refused("the text " + *why);
  if (auto status = helper_->status()) throw helper_gone(*status);
  commands_->op()->write(text);
}

bool session::flush(milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  const platform::FolderItem data = commands_->channel_folder().Child("data");
  for (;;) {
    if (!data.Exists()) return true;
    if (helper_->status() || std::chrono::steady_clock::now() >= deadline) return false;
    std::this_thread::sleep_for(kLook);
  }
}

void session::take_replies(bool wait) {
  if (!replies_->data_waiting()) return;
  auto op = wait ? replies_->op() : replies_->try_op();
  if (!op) return;
  for (const std::string& text : op->read_all()) {
    if (auto e = event::from_reply(text)) pending_.push_back(std::move(*e));
  }
}

std::optional<event> session::poll() {
  if (pending_.empty()) {
    // The status is looked at before the channel, so that replies sent just before the end are
    // handed out before the news of it.
    auto status = helper_->status();
    take_replies(status.has_value());
    if (pending_.empty()) {
      if (status) return event::ended(*status);
      return std::nullopt;
    }
  }
  event e = std::move(pending_.front());
  pending_.pop_front();
  return e;
}

std::optional<event> session::next_event(milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (;;) {
    if (auto e = poll()) return e;
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left <= milliseconds(0)) return std::nullopt;
    // A reply left on the channel means the helper was still inside it: it lets go within a
    // moment, and no further write will tell of it.
    const milliseconds pause = replies_->data_waiting() ? kRetry : kLook;
    if (!reply_watch_.Watching()) reply_watch_.Watch(replies_->channel_folder(), "data");
    reply_watch_.Wait(static_cast<int>(std::min(pause, left).count()));
  }
}

}  // namespace qem_client
