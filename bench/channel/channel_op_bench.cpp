// Channel figures, measured with real sleeps and real processes, printed as text:
//  1. one op cycle on an idle channel: a free entry lock costs one attempt and no sleep, so the
//     cycle is the work of the attempt, the folder check and the release, in microseconds; and
//     how late a sleep of the back-off (33 to 65 ms, only after an attempt that found the lock
//     held) wakes;
//  2. burst throughput to one receiver from 1 and from 8 sender processes, for a receiver that
//     takes one record per op and for one that takes every whole record per op (as the command
//     server does).
//
// Usage: channel_op_bench [OPS] [MESSAGES_PER_SENDER]   (defaults 200 and 400)

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "platform/clock.h"
#include "support/private_folders.h"

namespace {

double Percentile(std::vector<double> values, double p) {
  std::sort(values.begin(), values.end());
  std::size_t index = static_cast<std::size_t>(p * static_cast<double>(values.size() - 1) + 0.5);
  return values[index];
}

double Mean(const std::vector<double>& values) {
  double sum = 0;
  for (double v : values) sum += v;
  return sum / static_cast<double>(values.size());
}

void IdleOpCycle(int ops) {
  auto sock = std::make_shared<many_to_one::sender>("bench.idle", log_file::make_null());
  sock->op();  // the first op makes the channel folder; not counted
  std::vector<double> cycle_ms;
  for (int i = 0; i < ops; ++i) {
    double start = platform::Microseconds();
    sock->op();
    cycle_ms.push_back((platform::Microseconds() - start) / 1000.0);
  }
  // How late a back-off sleep wakes, and the work of an op measured on its own (lock attempt,
  // folder check, release).
  std::vector<double> overshoot_us, work_us;
  for (int i = 0; i < ops; ++i) {
    int ms = 33 + i % 33;
    double start = platform::Microseconds();
    platform::SleepCurrent(ms);
    overshoot_us.push_back(platform::Microseconds() - start - ms * 1000.0);
  }
  auto entry = sock->entry_mutex();
  auto folder = platform::SpecialFolder::Preferences().Child("qem.many_to_one.bench.idle.dir");
  for (int i = 0; i < ops * 10; ++i) {
    double start = platform::Microseconds();
    {
      auto lock = lock_file::make(entry, log_file::make_null());
      if (!folder.Exists()) folder.CreateFolder();
    }
    work_us.push_back(platform::Microseconds() - start);
  }
  std::printf("One op cycle on an idle channel (%d ops; a free entry lock is one attempt)\n", ops);
  std::printf(
      "  median %.0f us, p10 %.0f us, p90 %.0f us, min %.0f us, max %.0f us, mean %.0f us\n",
      Percentile(cycle_ms, 0.5) * 1000, Percentile(cycle_ms, 0.1) * 1000,
      Percentile(cycle_ms, 0.9) * 1000, Percentile(cycle_ms, 0.0) * 1000,
      Percentile(cycle_ms, 1.0) * 1000, Mean(cycle_ms) * 1000);
  std::printf("  op work alone (attempt, folder check, release): median %.0f us\n",
              Percentile(work_us, 0.5));
  std::printf("  a back-off sleep of 33 to 65 ms wakes late by: median %.0f us\n",
              Percentile(overshoot_us, 0.5));
}

// Sends `count` numbered messages, one op per message, as the reply path does.
[[noreturn]] void SenderProcess(const std::string& id, int tag, int count) {
  auto sock = std::make_shared<many_to_one::sender>(id, log_file::make_null());
  for (int i = 0; i < count; ++i) {
    sock->op()->write("sender " + std::to_string(tag) + " message " + std::to_string(i));
  }
  ::_exit(0);
}

void Burst(int senders, int per_sender, bool one_per_op) {
  std::string id = "bench.burst." + std::to_string(senders) + (one_per_op ? ".one" : ".all");
  auto sock = many_to_one::receiver::make(id, log_file::make_null());
  if (!sock) std::abort();
  const int total = senders * per_sender;
  double start = platform::Microseconds();
  std::vector<pid_t> children;
  for (int tag = 0; tag < senders; ++tag) {
    pid_t pid = ::fork();
    if (pid == 0) SenderProcess(id, tag, per_sender);
    children.push_back(pid);
  }
  int received = 0, ops = 0;
  while (received < total) {
    auto op = sock->op();
    ++ops;
    do {
      if (op->read().empty()) break;
      ++received;
    } while (!one_per_op);
  }
  double seconds = (platform::Microseconds() - start) / 1e6;
  for (pid_t pid : children) ::waitpid(pid, nullptr, 0);
  double rate = total / seconds;
  std::printf(
      "  %d sender%s x %d messages, receiver takes %s: %.0f messages/s over %.2f s,"
      " %d receiver ops\n",
      senders, senders == 1 ? " " : "s", per_sender,
      one_per_op ? "one record per op  " : "every record per op", rate, seconds, ops);
}

}  // namespace

int main(int argc, char** argv) {
  int ops = argc > 1 ? std::atoi(argv[1]) : 200;
  int per_sender = argc > 2 ? std::atoi(argv[2]) : 400;
  qem_test::PrivateFolders folders;
  IdleOpCycle(ops);
  std::printf("Burst throughput to one receiver (one op per message on the sending side)\n");
  Burst(1, per_sender, true);
  Burst(8, per_sender / 2, true);
  Burst(1, per_sender, false);
  Burst(8, per_sender, false);
  return 0;
}
