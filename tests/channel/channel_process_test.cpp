// The channel between real processes: many senders against one receiver, and a sender that dies
// while it holds the entry lock.

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <thread>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "channel_messages.h"
#include "platform/clock.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;
using many_to_one::receiver;
using ChannelProcessTest = qem_test::ChannelTest;

const std::string kHelper = QEM_CHANNEL_HELPER;

qem_test::Child StartSender(const std::string& id, int tag, int count, int per_op) {
  return qem_test::Spawn(
      {kHelper, "send", id, std::to_string(tag), std::to_string(count), std::to_string(per_op)});
}

// Drains `sock` until `total` messages came or the time is up. Checks each message on arrival:
// whole, from a known sender, and the next one that sender sent. Gives how many arrived.
int Drain(receiver& sock, std::map<int, int>& next, int total, std::chrono::seconds limit) {
  int received = 0;
  double deadline = platform::Microseconds() + 1e6 * static_cast<double>(limit.count());
  while (received < total && platform::Microseconds() < deadline) {
    auto op = sock.op();
    for (std::string message; !(message = op->read()).empty();) {
      int tag = -1, index = -1;
      if (!qem_test::ParseNumbered(message, tag, index)) {
        ADD_FAILURE() << "torn or merged record of " << message.size()
                      << " bytes: " << message.substr(0, 40);
        return received;
      }
      EXPECT_EQ(index, next[tag]) << "sender " << tag << " out of order or duplicated";
      next[tag] = index + 1;
      ++received;
    }
  }
  return received;
}

TEST_F(ChannelProcessTest, EightSendersDeliverEveryMessageOnceAndInTheirOrder) {
  constexpr int kSenders = 8;
  constexpr int kMessages = 300;  // every 25th is 64 KiB
  constexpr int kPerOp = 10;
  auto sock = receiver::make("busy", log_file::make_null());
  ASSERT_NE(sock, nullptr);
  std::vector<qem_test::Child> senders;
  for (int tag = 0; tag < kSenders; ++tag) {
    senders.push_back(StartSender("busy", tag, kMessages, kPerOp));
  }
  std::map<int, int> next;
  int received = Drain(*sock, next, kSenders * kMessages, 100s);
  for (auto& child : senders) EXPECT_EQ(child.Wait(30s), 0);
  EXPECT_EQ(received, kSenders * kMessages);
  for (int tag = 0; tag < kSenders; ++tag) EXPECT_EQ(next[tag], kMessages) << "sender " << tag;
  EXPECT_EQ(sock->op()->read(), "");
  EXPECT_EQ(sock->buffer(), "");
  EXPECT_FALSE(std::filesystem::exists(Data("busy")));
}

TEST_F(ChannelProcessTest, SenderKilledInsideItsOpFreesTheEntryLockForTheOthers) {
  auto sock = receiver::make("ch", log_file::make_null());
  ASSERT_NE(sock, nullptr);
  auto ready = root() / "ready";
  // A sender inside its op holds the entry lock, and nothing else of the channel.
  auto holder = qem_test::Spawn({kHelper, "hold-lock", EntryLock("ch").string(), ready.string()});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 30s));
  EXPECT_EQ(lock_file::make(platform::FolderItem(EntryLock("ch")), log_file::make_null()), nullptr);
  std::vector<qem_test::Child> senders;
  senders.push_back(StartSender("ch", 1, 20, 4));
  senders.push_back(StartSender("ch", 2, 20, 4));
  std::this_thread::sleep_for(300ms);
  for (auto& child : senders) EXPECT_TRUE(child.Running()) << "senders wait behind the holder";
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  holder.Kill(SIGKILL);
  EXPECT_EQ(holder.Wait(30s), 128 + SIGKILL);
  std::map<int, int> next;
  EXPECT_EQ(Drain(*sock, next, 40, 60s), 40);
  for (auto& child : senders) EXPECT_EQ(child.Wait(30s), 0);
  EXPECT_EQ(next[1], 20);
  EXPECT_EQ(next[2], 20);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch"))) << "the leftover file went on release";
}

}  // namespace
