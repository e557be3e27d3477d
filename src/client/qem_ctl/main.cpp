// qem_ctl: plays the starting application for scripts and other languages. It launches the
// helper, sends each line of standard input as one command, prints each reply as one line of
// JSON on standard output as it arrives, and ends the helper at the end of input or on SIGINT,
// SIGTERM or SIGHUP. See Usage() for the language and the exit statuses.

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "client/session.h"
#include "platform/exceptions.h"
#include "platform/text.h"
#include "qem_ctl/script.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kSomeLineBad = 1;
constexpr int kUsage = 2;
constexpr int kNoLaunch = 3;
constexpr int kHelperEnded = 4;

const char* Usage() {
  return R"(Usage: qem_ctl [--helper=PATH] [--launch-timeout=SECONDS] [--name=BASE]
       qem_ctl --help

Launches the helper (qem_util beside qem_ctl, else the file that QEM_UTIL_HELPER names, else
the installed one; --helper says otherwise) and waits until it serves (15 s at most unless
--launch-timeout says otherwise). Then each line of standard input is one step; each reply to
a button press is printed on standard output as one line of JSON,
{"obj_id":"p1","cmd":"pressed","btn_id":"stop"}, as it arrives. At the end of input qem_ctl
waits until the helper has taken every command (5 s at most), then lets it go; so does SIGINT,
SIGTERM or SIGHUP, at once. A line that is no step is reported on stderr with its number and
why ("qem_ctl: line 3: ..."), and the lines after it go on. Lines of the helper's own output
go to stderr as they come.

Steps:
  create ID [KEY=VALUE ...]     a new window
  set ID [KEY=VALUE ...]        changes the window's top state
  push ID [KEY=VALUE ...]       puts a new state on top (a question); a press drops it again
  delete ID                     closes the window
  {"obj_id":"p1","cmd":...}     a command in JSON, sent as it is
  sleep SECONDS                 pauses; replies are still printed as they come
  wait [ID] [timeout=SECONDS]   pauses until a reply of window ID (of any window without ID)
                                has come that no earlier wait took; without timeout, for as
                                long as it takes
  # ...                         a comment; blank lines are skipped too

Keys:
  title=TEXT  message=TEXT
  style=N or style=FLAGS        1 message (else in the title bar), 2 bar (buttons at its
                                right, else centred), 4 hidden; FLAGS: message+bar+hidden
  progress=X                    0 to 1 fills the bar; progress=busy (or below 0): busy bar
  buttons=ID:TEXT,ID:TEXT       the buttons, first one rightmost; buttons= removes them all
  button=ID:TEXT                one more button (for a TEXT with a comma); repeatable
A word with blanks goes in double quotes; inside them \" \\ \n \t are a quotation mark, a
backslash, a line break and a tab. IDs can't hold a quotation mark, a backslash or a control
character: a reply could not carry them.

Example:
  create p1 style=message+bar title=Copying message="Step 1" progress=0.25 buttons=stop:Stop
  set p1 progress=0.5 message="Step 2"
  wait p1 timeout=30
  delete p1

Options:
  --helper=PATH            the helper executable
  --launch-timeout=SECONDS how long the helper may take to serve (default 15)
  --name=BASE              name the locks and channels BASE.alive, BASE.up, BASE.cmd and
                           BASE.reply instead of unique names (to watch them with other tools)

Exit status: 0 end of input, every line done; 1 end of input, but a line was refused or a wait
ran out of time; 2 bad usage; 3 the helper could not be launched (why on stderr); 4 the helper
ended before the end of input; 128+N ended by signal N (130 SIGINT, 143 SIGTERM, 129 SIGHUP),
after ending the helper.
)";
}

volatile std::sig_atomic_t g_signal = 0;

void OnSignal(int number) {
  g_signal = number;
}

void Catch(int number) {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: a pending poll() returns at once
  ::sigaction(number, &action, nullptr);
}

// Splits standard input into lines as it comes, never blocking.
class line_reader {
 public:
  // Reads what is there, waiting at most `limit` for something to come.
  void fill(milliseconds limit) {
    if (ended_) {
      std::this_thread::sleep_for(limit);
      return;
    }
    pollfd in = {0, POLLIN, 0};
    if (::poll(&in, 1, static_cast<int>(limit.count())) <= 0) return;
    char buffer[65536];
    ssize_t got = ::read(0, buffer, sizeof buffer);
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
  bool done() const { return ended_ && pending_.empty(); }

 private:
  std::string pending_;
  bool ended_ = false;
};

struct pacing {
  bool sleeping = false;
  bool waiting = false;
  bool limited = false;
  Clock::time_point until;
  std::optional<std::string> obj_id;
  long line = 0;
};

bool ParseSeconds(const std::string& text, double& seconds) {
  char* end = nullptr;
  seconds = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0' && seconds > 0 && seconds < 1e6;
}

class controller {
 public:
  explicit controller(qem_client::session& s) : session_(s) {}

  // Runs until the input ends, a signal comes or the helper ends; gives the exit status.
  int run() {
    for (;;) {
      if (g_signal) return 128 + g_signal;
      if (!print_events()) return kHelperEnded;
      if (pace_.sleeping || pace_.waiting) {
        if (!paced()) {
          input_.fill(milliseconds(5));
          continue;
        }
      }
      std::string line;
      if (input_.next(line)) {
        do_line(line);
        continue;
      }
      if (input_.done()) {
        session_.flush(std::chrono::seconds(5));
        return bad_ ? kSomeLineBad : 0;
      }
      input_.fill(milliseconds(5));
    }
  }

 private:
  // Prints every event that has come; false when the helper has ended.
  bool print_events() {
    while (auto e = session_.poll()) {
      if (e->what == qem_client::event::kind::helper_ended) {
        std::fprintf(stderr, "qem_ctl: the helper ended (status %d)\n", e->exit_status);
        return false;
      }
      std::printf("%s\n", qem_client::to_json(*e).c_str());
      std::fflush(stdout);
      untaken_.push_back(e->obj_id);
    }
    return true;
  }

  // True when the pause in force is over.
  bool paced() {
    if (pace_.waiting) {
      for (auto it = untaken_.begin(); it != untaken_.end(); ++it) {
        if (!pace_.obj_id || platform::EqualsPlain(*it, *pace_.obj_id)) {
          untaken_.erase(it);
          pace_.waiting = false;
          return true;
        }
      }
    }
    if (!pace_.limited || Clock::now() < pace_.until) return false;
    if (pace_.waiting) {
      Bad(pace_.line,
          "no reply" + (pace_.obj_id ? " from " + *pace_.obj_id : std::string()) + " came in time");
    }
    pace_.sleeping = pace_.waiting = false;
    return true;
  }

  void do_line(const std::string& line) {
    ++line_;
    try {
      const qem_ctl::step s = qem_ctl::parse_line(line);
      switch (s.what) {
        case qem_ctl::step::kind::nothing:
          break;
        case qem_ctl::step::kind::send:
          session_.send_json(s.json);
          break;
        case qem_ctl::step::kind::sleep:
        case qem_ctl::step::kind::wait:
          pace_ = {};
          pace_.sleeping = s.what == qem_ctl::step::kind::sleep;
          pace_.waiting = !pace_.sleeping;
          pace_.limited = s.seconds >= 0;
          pace_.until = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                           std::chrono::duration<double>(std::max(s.seconds, 0.0)));
          pace_.obj_id = s.obj_id;
          pace_.line = line_;
          break;
      }
    } catch (const qem_ctl::bad_line& error) {
      Bad(line_, error.what());
    } catch (const qem_client::command_refused& error) {
      Bad(line_, error.what());
    } catch (const qem_client::helper_gone&) {
      // Told by the next look at the events.
    } catch (const platform::Exception& error) {
      Bad(line_, error.what());
    }
  }

  void Bad(long line, const std::string& why) {
    std::fprintf(stderr, "qem_ctl: line %ld: %s\n", line, why.c_str());
    bad_ = true;
  }

  qem_client::session& session_;
  line_reader input_;
  pacing pace_;
  std::deque<std::string> untaken_;  // obj_ids of replies that no wait has taken yet
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
    const std::string arg = argv[i];
    const std::size_t equals = arg.find('=');
    const std::string name = arg.substr(0, equals);
    const std::string value = equals == std::string::npos ? "" : arg.substr(equals + 1);
    double seconds = 0;
    if (arg == "--help" || arg == "-h") {
      std::fputs(Usage(), stdout);
      return 0;
    } else if (name == "--helper" && !value.empty()) {
      options.helper = value;
    } else if (name == "--launch-timeout" && ParseSeconds(value, seconds)) {
      options.launch_limit = milliseconds(static_cast<long long>(seconds * 1000));
    } else if (name == "--name" && equals != std::string::npos) {
      options.names = qem_client::session_names::from_base(value);
    } else {
      return BadUsage("unknown or incomplete option \"" + arg + "\"");
    }
  }
  ::signal(SIGPIPE, SIG_IGN);
  for (int number : {SIGINT, SIGTERM, SIGHUP}) Catch(number);
  int status;
  try {
    qem_client::session session(options);
    status = controller(session).run();
  } catch (const qem_client::launch_error& error) {
    std::fprintf(stderr, "qem_ctl: %s\n", error.what());
    return error.why == qem_client::launch_error::reason::bad_names ? kUsage : kNoLaunch;
  }
  return status;
}
