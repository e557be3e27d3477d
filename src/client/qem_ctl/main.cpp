// qem_ctl: plays the starting application for scripts and other languages. It launches the
// helper, sends each line of standard input as one command, prints each reply as one line of
// JSON on standard output as it arrives, and ends the helper at the end of input or on SIGINT,
// SIGTERM or SIGHUP. See Usage() for the language and the exit statuses. While it waits (for
// input, a reply, the end of a pause) it sleeps until one of them comes, and costs nothing.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "client/session.h"
#include "platform/text.h"
#include "qem_ctl/script.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kSomeLineBad = 1;
constexpr int kUsage = 2;
constexpr int kNoLaunch = 3;
constexpr int kHelperEnded = 4;

std::string Usage();
std::string Version() {
  return "qem_ctl " QEM_VERSION "\n";
}

// An option of the command line: one that sets a launch option from its value (--NAME=VALUE), or
// one that is answered on standard output at once.
struct option {
  std::string_view name;
  std::string_view synopsis;
  std::string_view meaning;
  // Sets what the option says; false when the value won't do. Null for an answered option.
  bool (*apply)(const std::string& value, qem_client::launch_options& options);
  std::string (*answer)();
};

const option kOptions[] = {
    {"--helper", "--helper=PATH", "the helper executable",
     [](const std::string& value, qem_client::launch_options& options) {
       options.helper = value;
       return !value.empty();
     },
     nullptr},
    {"--launch-timeout", "--launch-timeout=SECONDS",
     "how long the helper may take to serve (default 15)",
     [](const std::string& value, qem_client::launch_options& options) {
       const auto seconds = qem_ctl::read_number(value);
       if (!seconds || *seconds <= 0 || *seconds >= 1e6) return false;
       options.launch_limit = milliseconds(static_cast<long long>(*seconds * 1000));
       return true;
     },
     nullptr},
    {"--name", "--name=BASE",
     "name the locks and channels BASE.alive, BASE.up, BASE.cmd and\n"
     "BASE.reply instead of unique names (to watch them with other\n"
     "tools)",
     [](const std::string& value, qem_client::launch_options& options) {
       options.names = qem_client::session_names::from_base(value);
       return true;
     },
     nullptr},
    {"--help", "--help", "this text", nullptr, Usage},
    {"--version", "--version", "\"qem_ctl\" and the version", nullptr, Version},
};

std::string Usage() {
  std::string text = "Usage: qem_ctl";
  for (const option& o : kOptions) {
    if (o.apply) text += " [" + std::string(o.synopsis) + "]";
  }
  for (const option& o : kOptions) {
    if (o.answer) text += "\n       qem_ctl " + std::string(o.synopsis);
  }
  text += R"(

Launches the helper (qem_util beside qem_ctl, else the file that QEM_UTIL_HELPER names, else
the installed one; --helper says otherwise) and waits until it serves (15 s at most unless
--launch-timeout says otherwise). Then each line of standard input is one step; each reply to
a button press is printed on standard output as one line of JSON,
{"obj_id":"p1","cmd":"pressed","btn_id":"stop"}, as it arrives. At the end of input qem_ctl
waits until the helper has taken every command (5 s at most), then lets it go; so does SIGINT,
SIGTERM or SIGHUP, at once. A line that is no step is reported on stderr with its number and
why ("qem_ctl: line 3: ..."), and the lines after it go on. Lines of the helper's own output
go to stderr as they come.

)";
  text += qem_ctl::usage();
  text += R"(
A word with blanks goes in double quotes; inside them \" \\ \n \t are a quotation mark, a
backslash, a line break and a tab. IDs can't hold a quotation mark, a backslash or a control
character: a reply could not carry them.

Example:
  create p1 style=message+bar title=Copying message="Step 1" progress=0.25 buttons=stop:Stop
  set p1 progress=0.5 message="Step 2"
  wait p1 timeout=30
  delete p1

Options:
)";
  for (const option& o : kOptions) text += qem_ctl::usage_entry(o.synopsis, o.meaning);
  return text + R"(
Exit status: 0 end of input, every line done; 1 end of input, but a line was refused or a wait
ran out of time; 2 bad usage; 3 the helper could not be launched (why on stderr); 4 the helper
ended before the end of input; 128+N ended by signal N (130 SIGINT, 143 SIGTERM, 129 SIGHUP),
after ending the helper.
)";
}

volatile std::sig_atomic_t g_signal = 0;
// A signal's arrival, as a descriptor that a sleep can wake on: the handler writes a byte.
int g_signal_pipe[2] = {-1, -1};

void OnSignal(int number) {
  const int saved = errno;
  g_signal = number;
  const char byte = 0;
  [[maybe_unused]] auto ignored = ::write(g_signal_pipe[1], &byte, 1);
  errno = saved;
}

void CatchSignals() {
  if (::pipe(g_signal_pipe) == 0) {
    for (int fd : g_signal_pipe) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
    ::fcntl(g_signal_pipe[1], F_SETFL, O_NONBLOCK);
  }
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  for (int number : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(number, &action, nullptr);
}

// Splits standard input into lines as it comes, never blocking.
class line_reader {
 public:
  // Takes what standard input holds now, without waiting.
  void fill() {
    pollfd in = {0, POLLIN, 0};
    if (ended_ || ::poll(&in, 1, 0) <= 0) return;
    char buffer[65536];
    const ssize_t got = ::read(0, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (got <= 0) {
      ended_ = true;
      return;
    }
    pending_.append(buffer, static_cast<std::size_t>(got));
  }
  // The next whole line (the last one also without a line break once input ended).
  bool next(std::string& line) {
    std::size_t end = pending_.find('\n');
    if (end == std::string::npos) {
      if (!ended_ || pending_.empty()) return false;
      end = pending_.size();
    }
    line = pending_.substr(0, end);
    pending_.erase(0, std::min(end + 1, pending_.size()));
    return true;
  }
  bool ended() const { return ended_; }
  bool done() const { return ended_ && pending_.empty(); }

 private:
  std::string pending_;
  bool ended_ = false;
};

// A sleep or a wait in force: the next line stays back until it is over.
struct pacing {
  bool for_reply = false;                    // a wait, over once a reply of obj_id has come
  std::optional<std::string> obj_id{};       // of a wait: whose reply; nullopt for any window's
  std::optional<Clock::time_point> until{};  // when it ends (a wait: runs out); nullopt: never
  long line = 0;
};

class controller {
 public:
  explicit controller(qem_client::session& s) : session_(s) {}

  // Runs until the input ends, a signal comes or the helper ends; gives the exit status.
  int run() {
    for (;;) {
      if (g_signal) return 128 + g_signal;
      if (!print_events()) return kHelperEnded;
      std::string line;
      if (!pause_over()) {
        sleep();
      } else if (input_.next(line)) {
        do_line(line);
      } else if (input_.done()) {
        session_.flush(std::chrono::seconds(5));
        return bad_ ? kSomeLineBad : 0;
      } else {
        sleep();
      }
    }
  }

 private:
  // Sleeps until a reply comes, the helper ends, input comes, a signal comes or the pause in
  // force ends, whichever is first.
  void sleep() {
    std::optional<milliseconds> limit;
    if (pause_ && pause_->until) {
      limit =
          std::max(milliseconds(0), std::chrono::ceil<milliseconds>(*pause_->until - Clock::now()));
    }
    std::vector<int> wake_on = {g_signal_pipe[0]};
    if (!input_.ended()) wake_on.push_back(0);
    arrived_ = session_.next_event(limit, wake_on);
    input_.fill();
  }

  // Prints the event; false when it tells that the helper has ended.
  bool print(const qem_client::event& e) {
    if (e.what == qem_client::event::kind::helper_ended) {
      std::fprintf(stderr, "qem_ctl: the helper ended (status %d)\n", e.exit_status);
      return false;
    }
    std::printf("%s\n", qem_client::to_json(e).c_str());
    std::fflush(stdout);
    untaken_.push_back(e.obj_id);
    return true;
  }

  // Prints every event that has come; false when the helper has ended.
  bool print_events() {
    if (auto e = std::exchange(arrived_, std::nullopt); e && !print(*e)) return false;
    while (auto e = session_.poll()) {
      if (!print(*e)) return false;
    }
    return true;
  }

  // True when no pause is in force (any more).
  bool pause_over() {
    if (!pause_) return true;
    if (pause_->for_reply) {
      for (auto it = untaken_.begin(); it != untaken_.end(); ++it) {
        if (!pause_->obj_id || platform::EqualsPlain(*it, *pause_->obj_id)) {
          untaken_.erase(it);
          pause_.reset();
          return true;
        }
      }
    }
    if (!pause_->until || Clock::now() < *pause_->until) return false;
    if (pause_->for_reply) {
      Bad(pause_->line, "no reply" + (pause_->obj_id ? " from " + *pause_->obj_id : std::string()) +
                            " came in time");
    }
    pause_.reset();
    return true;
  }

  void do_line(const std::string& line) {
    ++line_;
    try {
      const qem_ctl::step s = qem_ctl::parse_line(line);
      if (s.what == qem_ctl::step::kind::send) session_.send_json(s.json);
      if (s.what != qem_ctl::step::kind::sleep && s.what != qem_ctl::step::kind::wait) return;
      pause_ = pacing{
          .for_reply = s.what == qem_ctl::step::kind::wait, .obj_id = s.obj_id, .line = line_};
      if (s.limit) {
        // Beyond a lifetime a limit is none, and stays within the clock's range.
        const auto limit = std::min(*s.limit, std::chrono::duration<double>(1e9));
        pause_->until = Clock::now() + std::chrono::duration_cast<Clock::duration>(limit);
      }
    } catch (const qem_ctl::bad_line& error) {
      Bad(line_, error.what());
    } catch (const qem_client::helper_gone&) {
      // Told by the next look at the events.
    } catch (const qem_client::error& error) {
      Bad(line_, error.what());
    }
  }

  void Bad(long line, const std::string& why) {
    std::fprintf(stderr, "qem_ctl: line %ld: %s\n", line, why.c_str());
    bad_ = true;
  }

  qem_client::session& session_;
  line_reader input_;
  std::optional<pacing> pause_;
  std::optional<qem_client::event> arrived_;  // handed out by the last sleep, not yet printed
  std::deque<std::string> untaken_;           // obj_ids of replies that no wait has taken yet
  long line_ = 0;
  bool bad_ = false;
};

int BadUsage(const std::string& what) {
  std::fprintf(stderr, "qem_ctl: %s (see qem_ctl --help)\n", what.c_str());
  return kUsage;
}

}  // namespace

int main(int argc, char** argv) {
  qem_client::launch_options options;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = std::string(argv[i]) == "-h" ? "--help" : argv[i];
    const std::size_t equals = arg.find('=');
    const auto known = std::find_if(std::begin(kOptions), std::end(kOptions), [&](const option& o) {
      return o.name == arg.substr(0, equals);
    });
    if (known != std::end(kOptions) && known->answer && equals == std::string::npos) {
      std::fputs(known->answer().c_str(), stdout);
      return 0;
    }
    if (known == std::end(kOptions) || !known->apply || equals == std::string::npos ||
        !known->apply(arg.substr(equals + 1), options)) {
      return BadUsage("unknown or incomplete option \"" + arg + "\"");
    }
  }
  ::signal(SIGPIPE, SIG_IGN);
  CatchSignals();
  try {
    qem_client::session session(options);
    return controller(session).run();
  } catch (const qem_client::launch_error& error) {
    std::fprintf(stderr, "qem_ctl: %s\n", error.what());
    return error.why == qem_client::launch_error::reason::bad_names ? kUsage : kNoLaunch;
  }
}
