// qem_channel: send, receive and watch many_to_one channels from a shell, with the same code the
// helper uses. See Usage() for the commands and exit statuses.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "platform/clock.h"
#include "platform/exceptions.h"

namespace {

constexpr int kUsage = 2;
constexpr int kReceiverTaken = 3;
constexpr int kFault = 4;

const char* Usage() {
  return R"(Usage:
  qem_channel send ID [TEXT]
      Sends TEXT as one message on channel ID. Without TEXT, sends each line of standard
      input as one message (the line break is not sent). Waits for the channel's entry lock
      before each message; does not wait for a reader.
  qem_channel receive ID [--count N] [--timeout SECONDS] [--purge] [-0]
      Opens the receiving end of channel ID and prints each message, followed by a newline
      (a NUL with -0), as it arrives. --purge first discards what waits in the channel.
      Stops after N messages or after SECONDS (fractions allowed); without either it runs
      until killed. Records that arrived beyond N are put back for the next receiver.
  qem_channel occupied ID
      Tells whether a receiver holds channel ID.
  qem_channel --help
      Shows this text.

Channels live in the preferences folder ($XDG_CONFIG_HOME, else $HOME/.config; on macOS
$HOME/Library/Preferences) as qem.many_to_one.ID (entry lock), qem.many_to_one.r.ID
(receiver lock) and qem.many_to_one.ID.dir/data (records, each ended by a NUL). An ID holding
"/" or a NUL, "." or "..", or one that would make a file name longer than 255 bytes is
refused.

Exit status: 0 done (occupied: a receiver holds the channel); 1 occupied: no receiver holds
it; 2 bad usage or a refused ID; 3 receive: another receiver holds the channel; 4 a file
could not be used.
)";
}

int BadUsage(const std::string& what) {
  std::fprintf(stderr, "qem_channel: %s (see qem_channel --help)\n", what.c_str());
  return kUsage;
}

int Send(const std::string& id, const std::vector<std::string>& rest) {
  if (rest.size() > 1) return BadUsage("send takes one TEXT at most");
  auto sock = std::make_shared<many_to_one::sender>(id, log_file::make_null());
  if (rest.size() == 1) {
    sock->op()->write(rest[0]);
    return 0;
  }
  std::string line;
  while (std::getline(std::cin, line)) sock->op()->write(line);
  return 0;
}

struct ReceiveOptions {
  long count = -1;      // -1: no limit
  double timeout = -1;  // seconds; -1: no limit
  bool purge = false;
  char end = '\n';
};

bool ParseNumber(const std::string& text, double& value) {
  char* end = nullptr;
  errno = 0;
  value = std::strtod(text.c_str(), &end);
  return !text.empty() && *end == '\0' && errno == 0 && value >= 0;
}

// Puts what the receiver took but did not hand out back in front of the data file, in one op,
// so that no record is lost to the next receiver.
void PutBack(many_to_one::receiver& sock) {
  if (sock.buffer().empty()) return;
  auto op = sock.op();
  op->flush_file_to_buffer();
  op->append_to_data(sock.buffer());
}

int Receive(const std::string& id, const std::vector<std::string>& rest) {
  ReceiveOptions options;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const std::string& arg = rest[i];
    double number = 0;
    if (arg == "--purge") {
      options.purge = true;
    } else if (arg == "-0") {
      options.end = '\0';
    } else if (arg == "--count" || arg == "--timeout") {
      if (i + 1 == rest.size() || !ParseNumber(rest[i + 1], number)) {
        return BadUsage(arg + " needs a number that is not negative");
      }
      ++i;
      if (arg == "--count") {
        if (number != static_cast<double>(static_cast<long>(number)) || number < 1) {
          return BadUsage("--count needs a whole number of at least 1");
        }
        options.count = static_cast<long>(number);
      } else {
        options.timeout = number;
      }
    } else {
      return BadUsage("unknown argument \"" + arg + "\" for receive");
    }
  }
  auto sock = many_to_one::receiver::make(id, log_file::make_null());
  if (!sock) {
    std::fprintf(stderr, "qem_channel: another receiver holds channel \"%s\"\n", id.c_str());
    return kReceiverTaken;
  }
  if (options.purge) sock->op()->purge();
  const double deadline = platform::Microseconds() + options.timeout * 1e6;
  long received = 0;
  while (options.count < 0 || received < options.count) {
    if (options.timeout >= 0 && platform::Microseconds() >= deadline) break;
    // Looking costs one stat; the entry lock is taken only while records wait, so an idle
    // receiver neither spins nor keeps senders out.
    if (!sock->data_waiting()) {
      platform::SleepCurrent(5);
      continue;
    }
    auto op = sock->op();
    op->flush_file_to_buffer();
    // Every whole record is handed out, the empty one too.
    while ((options.count < 0 || received < options.count) &&
           sock->buffer().find('\0') != std::string::npos) {
      std::string message = op->read();
      std::fwrite(message.data(), 1, message.size(), stdout);
      std::fputc(options.end, stdout);
      ++received;
    }
    std::fflush(stdout);
  }
  PutBack(*sock);
  return 0;
}

int Occupied(const std::string& id, const std::vector<std::string>& rest) {
  if (!rest.empty()) return BadUsage("occupied takes no argument after ID");
  return many_to_one::receiver::is_occupied(id, log_file::make_null()) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.size() == 1 && (args[0] == "--help" || args[0] == "-h")) {
    std::fputs(Usage(), stdout);
    return 0;
  }
  if (args.empty()) return BadUsage("missing command");
  const std::string& command = args[0];
  if (command != "send" && command != "receive" && command != "occupied") {
    return BadUsage("unknown command \"" + command + "\"");
  }
  if (args.size() < 2) return BadUsage(command + " needs a channel ID");
  const std::string& id = args[1];
  std::vector<std::string> rest(args.begin() + 2, args.end());
  try {
    if (command == "send") return Send(id, rest);
    if (command == "receive") return Receive(id, rest);
    return Occupied(id, rest);
  } catch (const platform::UnsupportedFormatException& e) {
    // The channel refuses an ID that would leave its folder before it touches any file.
    std::fprintf(stderr, "qem_channel: %s\n", e.what());
    return kUsage;
  } catch (const platform::Exception& e) {
    std::fprintf(stderr, "qem_channel: %s\n", e.what());
    return kFault;
  }
}
