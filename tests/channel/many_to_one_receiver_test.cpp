// The receiving end: records out of the file and the buffer, purge, closing, and the probes.

#include "channel/many_to_one_receiver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel/many_to_one_sender.h"
#include "channel_fixture.h"
#include "platform/exceptions.h"

namespace {

using many_to_one::receiver;
using platform::FolderItem;

class ReceiverTest : public qem_test::ChannelTest {
 protected:
  void SetUp() override {
    ChannelTest::SetUp();
    sock = receiver::make("ch", log_file::make_null());
    ASSERT_NE(sock, nullptr);
  }
  std::string Read() { return sock->op()->read(); }
  void Send(const std::string& text) {
    std::make_shared<many_to_one::sender>("ch", log_file::make_null())->op()->write(text);
  }
  // Puts raw bytes into the data file, as a peer (or a dying sender) may leave them.
  void PutData(const std::string& bytes) {
    std::filesystem::create_directories(Folder("ch"));
    qem_test::WriteFile(Data("ch"), bytes);
  }
  std::shared_ptr<receiver> sock;
};

TEST_F(ReceiverTest, ReadHandsOutOneRecordPerCallInOrder) {
  PutData(std::string("one\0two\0three\0", 14));
  EXPECT_EQ(Read(), "one");
  EXPECT_FALSE(std::filesystem::exists(Data("ch"))) << "the first read empties the file";
  EXPECT_EQ(Read(), "two");
  Send("four");  // joins behind what waits in the buffer
  EXPECT_EQ(Read(), "three");
  EXPECT_EQ(Read(), "four");
  EXPECT_EQ(Read(), "");
  EXPECT_EQ(sock->buffer(), "");
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));
}

TEST_F(ReceiverTest, EmptyRecordsAndNulsInsideAreSplitAtEveryNul) {
  PutData(std::string("\0b\0", 3));
  EXPECT_EQ(Read(), "");   // the lone NUL is consumed ...
  EXPECT_EQ(Read(), "b");  // ... so the next read gives the next record
  Send(std::string("x\0y", 3));
  EXPECT_EQ(Read(), "x");
  EXPECT_EQ(Read(), "y");
  EXPECT_EQ(Read(), "");
}

TEST_F(ReceiverTest, UnterminatedTailWaitsInTheBufferAndJoinsTheNextRecord) {
  PutData(std::string("whole\0tail", 10));
  EXPECT_EQ(Read(), "whole");
  EXPECT_EQ(Read(), "");
  EXPECT_EQ(sock->buffer(), "tail");
  Send("more");
  EXPECT_EQ(Read(), "tailmore");  // no way to resynchronise after a torn record
}

TEST_F(ReceiverTest, PurgeDropsTheFileButNotTheBuffer) {
  PutData(std::string("one\0two\0", 8));
  EXPECT_EQ(Read(), "one");
  Send("three");
  sock->op()->purge();
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  EXPECT_EQ(Read(), "two");
  EXPECT_EQ(Read(), "");
  EXPECT_NO_THROW(sock->op()->purge());  // nothing to purge
}

TEST_F(ReceiverTest, MakeLeavesStaleRecordsAndAnOpNeverLogs) {
  sock.reset();
  PutData(std::string("stale\0", 6));
  auto log_path = root() / "receiver.log";
  sock = receiver::make("ch", std::make_shared<log_file>(FolderItem(log_path)));
  ASSERT_NE(sock, nullptr);
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("stale\0", 6));
  EXPECT_EQ(Read(), "stale");
  EXPECT_EQ(qem_test::LoggedMessages(log_path),
            std::vector<std::string>{"lock_file.constructor: " + ReceiverLock("ch").string()});
}

TEST_F(ReceiverTest, SecondReceiverGetsNilAndTheFirstStaysOpen) {
  EXPECT_EQ(receiver::make("ch", log_file::make_null()), nullptr);
  EXPECT_TRUE(std::filesystem::exists(ReceiverLock("ch")));
  EXPECT_FALSE(sock->closed());
  Send("still here");
  EXPECT_EQ(Read(), "still here");
  sock.reset();
  EXPECT_FALSE(std::filesystem::exists(ReceiverLock("ch")));
  EXPECT_NE(receiver::make("ch", log_file::make_null()), nullptr);
}

TEST_F(ReceiverTest, CloseIfEmptyKeepsTheReceiverOpenWhileARecordWaits) {
  Send("pending");
  sock->close_if_empty();
  EXPECT_FALSE(sock->closed());
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));  // moved to the buffer
  EXPECT_EQ(Read(), "pending");
  PutData("tail only");
  sock->close_if_empty();
  EXPECT_FALSE(sock->closed());
  EXPECT_EQ(sock->buffer(), "tail only");
}

TEST_F(ReceiverTest, CloseIfEmptyOnAnEmptyChannelClosesForGood) {
  sock.reset();
  auto log_path = root() / "receiver.log";
  sock = receiver::make("ch", std::make_shared<log_file>(FolderItem(log_path)));
  ASSERT_NE(sock, nullptr);
  sock->close_if_empty();
  EXPECT_TRUE(sock->closed());
  EXPECT_EQ(sock->op(), nullptr);
  EXPECT_NO_THROW(sock->close_if_empty());
  EXPECT_FALSE(std::filesystem::exists(ReceiverLock("ch")));
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  auto messages = qem_test::LoggedMessages(log_path);
  ASSERT_EQ(messages.size(), 4u);  // make's one message, then the close
  EXPECT_EQ(messages[1], "many_to_one.receiver.close_if_empty: About to relinquish.");
  EXPECT_EQ(messages[2], "many_to_one.receiver.close_if_empty: receiver_lock relinquished.");
  EXPECT_EQ(messages[3], "many_to_one.receiver.close_if_empty: close_op relinquished.");
  EXPECT_FALSE(receiver::is_occupied("ch", log_file::make_null()));
  EXPECT_NE(receiver::make("ch", log_file::make_null()), nullptr);
}

TEST_F(ReceiverTest, IsOccupiedProbesWithoutDisturbingAndLogsWhatItFound) {
  auto log_path = root() / "probe.log";
  auto log = std::make_shared<log_file>(FolderItem(log_path));
  EXPECT_TRUE(receiver::is_occupied("ch", log));
  EXPECT_TRUE(std::filesystem::exists(ReceiverLock("ch")));
  EXPECT_FALSE(sock->closed());
  EXPECT_FALSE(receiver::is_occupied("other", log));
  EXPECT_FALSE(std::filesystem::exists(ReceiverLock("other")));
  EXPECT_EQ(sock->receiver_mutex().NativePath(), ReceiverLock("ch").string());
  std::string probe = "lock_file.constructor: ";
  EXPECT_EQ(qem_test::LoggedMessages(log_path),
            (std::vector<std::string>{"many_to_one.is_occupied: Checking if occupied: ch",
                                      probe + ReceiverLock("ch").string(),
                                      "many_to_one.is_occupied: Is occupied: ch",
                                      "many_to_one.is_occupied: Checking if occupied: other",
                                      probe + ReceiverLock("other").string(),
                                      "many_to_one.is_occupied: Is not occupied: other"}));
}

TEST_F(ReceiverTest, AwaitsReturnOnceTheStateHoldsAndLogTheirTimes) {
  auto log_path = root() / "await.log";
  auto log = std::make_shared<log_file>(FolderItem(log_path));
  receiver::await_until_occupied("ch", log);
  receiver::await_until_not_occupied("nobody", log);
  auto messages = qem_test::LoggedMessages(log_path);
  ASSERT_EQ(messages.size(), 4u);  // the inner probes log nothing
  const std::string occupied = "many_to_one.receiver.await_until_occupied: ch";
  const std::string free = "many_to_one.receiver.await_until_not_occupied: nobody";
  EXPECT_EQ(messages[0], occupied);
  EXPECT_TRUE(std::regex_match(messages[1], std::regex(occupied + " took \\d+"))) << messages[1];
  EXPECT_EQ(messages[2], free);
  EXPECT_TRUE(std::regex_match(messages[3], std::regex(free + " took \\d+"))) << messages[3];
}

TEST_F(ReceiverTest, AwaitsThrowAtOnceWhenTheReceiverLockCanNeverBeHad) {
  std::filesystem::create_directories(ReceiverLock("never"));  // a folder where the lock goes
  EXPECT_TRUE(receiver::is_occupied("never", log_file::make_null()));
  EXPECT_THROW(receiver::await_until_not_occupied("never", log_file::make_null()),
               platform::IOException);
  EXPECT_THROW(receiver::await_until_occupied("never", log_file::make_null()),
               platform::IOException);
}

}  // namespace
