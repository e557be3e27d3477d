// The channel between real processes: eight senders against one receiver, queued behind a sender
// that is killed while it holds the entry lock. The senders are the qem_channel tool, one message
// per line.

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>
#include <vector>

#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "platform/clock.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;
using many_to_one::receiver;
using ChannelProcessTest = qem_test::ChannelTest;

// Message `index` of sender `tag`: "tag:index:" and then one letter over and over, 64 KiB in all
// for every 25th. A record merged with another or cut short is no message of this form.
std::string Numbered(int tag, int index) {
  std::string head = std::to_string(tag) + ":" + std::to_string(index) + ":";
  std::size_t length = index % 25 == 7 ? 64 * 1024 - head.size() : index * 37 % 200;
  return head + std::string(length, static_cast<char>('a' + (tag * 7 + index) % 26));
}

TEST_F(ChannelProcessTest, SendersWaitForAKilledHolderThenDeliverEveryMessageOnceInOrder) {
  constexpr int kSenders = 8;
  constexpr int kMessages = 300;  // every 25th is 64 KiB
  auto sock = receiver::make("ch", log_file::make_null());
  // A sender inside its op holds the entry lock, and nothing else of the channel.
  auto ready = root() / "ready";
  auto holder = qem_test::Spawn({QEM_CHANNEL_HELPER, "hold-lock", EntryLock("ch"), ready});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 30s));
  std::vector<qem_test::Child> senders;
  std::map<int, std::vector<std::string>> sent, got;
  for (int tag = 0; tag < kSenders; ++tag) {
    std::string lines;
    for (int i = 0; i < kMessages; ++i) lines += sent[tag].emplace_back(Numbered(tag, i)) + "\n";
    const auto input = root() / ("input" + std::to_string(tag));
    qem_test::WriteFile(input, lines);
    senders.push_back(
        qem_test::Spawn({QEM_CHANNEL_TOOL, "send", "ch"}, {.stdin_path = input.string()}));
  }
  std::this_thread::sleep_for(300ms);
  for (auto& child : senders) EXPECT_TRUE(child.Running()) << "senders wait behind the holder";
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  holder.Kill(SIGKILL);
  EXPECT_EQ(holder.Wait(30s), 128 + SIGKILL);
  // Each message goes to its sender's list; a record merged with another or cut short, or one
  // out of order, makes the lists differ.
  const double deadline = platform::Microseconds() + 100e6;
  for (int received = 0; received < kSenders * kMessages && platform::Microseconds() < deadline;) {
    auto op = sock->op();
    for (std::string message; !(message = op->read()).empty(); ++received) {
      got[std::atoi(message.c_str())].push_back(message);
    }
  }
  for (auto& child : senders) EXPECT_EQ(child.Wait(30s), 0);
  EXPECT_TRUE(got == sent) << got.size() << " senders heard, " << got[0].size() << " of the first";
  EXPECT_EQ(sock->op()->read(), "");
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch"))) << "the holder's leftover file stays";
}

}  // namespace
