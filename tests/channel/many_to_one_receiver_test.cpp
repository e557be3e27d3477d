// The receiving end: records out of the file and the buffer, purge, closing, and the probes.

#include "channel/many_to_one_receiver.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "channel_fixture.h"
#include "platform/exceptions.h"
#include "support/process.h"

namespace {

using many_to_one::receiver;

class ReceiverTest : public qem_test::ChannelTest {
 protected:
  // Puts raw bytes into the data file, as a peer (or a dying sender) may leave them.
  void PutData(const std::string& bytes) {
    std::filesystem::create_directories(Folder("ch"));
    qem_test::WriteFile(Data("ch"), bytes);
  }
};

TEST_F(ReceiverTest, ReadsHandOutWholeRecordsInOrderAndKeepTheTail) {
  const struct {
    const char* name;
    std::string data, first;        // in the file; what one read hands out
    std::vector<std::string> rest;  // what read_all hands out after it
    std::string left;               // in the buffer afterwards
  } rows[] = {
      {"in order, an empty record too", std::string("one\0\0two\0", 9), "one", {"", "two"}, ""},
      {"an unterminated tail waits", std::string("whole\0tail", 10), "whole", {}, "tail"},
      {"nothing whole yet", "partial", "", {}, "partial"},
  };
  auto sock = receiver::make("ch", log_file::make_null());
  for (const auto& row : rows) {
    PutData(row.data);
    EXPECT_TRUE(sock->data_waiting());
    EXPECT_EQ(sock->op()->read(), row.first) << row.name;
    EXPECT_FALSE(sock->data_waiting()) << "the first read empties the file";
    EXPECT_EQ(sock->op()->read_all(), row.rest) << row.name;
    EXPECT_EQ(sock->buffer(), row.left) << row.name;
    qem_test::Send("ch", {"next"});  // joins behind what waits in the buffer
    EXPECT_EQ(sock->op()->read_all(), std::vector<std::string>{row.left + "next"}) << row.name;
  }
  // Records left from before the receiver came are read; purge drops the file, not the buffer.
  sock.reset();
  PutData(std::string("stale\0two\0", 10));
  sock = receiver::make("ch", log_file::make_null());
  EXPECT_EQ(sock->op()->read(), "stale");
  qem_test::Send("ch", {"three"});
  sock->op()->purge();
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  EXPECT_EQ(sock->op()->read_all(), std::vector<std::string>{"two"});
}

TEST_F(ReceiverTest, TryOpNeverWaitsAndLeavesTheChannelToItsHolder) {
  auto sock = receiver::make("ch", log_file::make_null());
  qem_test::Send("ch", {"waiting"});
  {
    // The lock belongs to the descriptor: held here, it is held against the receiver too.
    auto entry = lock_file::make(platform::FolderItem(EntryLock("ch")), log_file::make_null());
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(sock->try_op(), nullptr);
    EXPECT_TRUE(std::filesystem::exists(Data("ch"))) << "read without the entry lock";
  }
  auto op = sock->try_op();
  ASSERT_NE(op, nullptr);
  EXPECT_EQ(op->read(), "waiting");
  EXPECT_EQ(sock->try_op(), nullptr) << "a second op while the first is alive";
}

TEST_F(ReceiverTest, OneReceiverPerChannelUntilItClosesWithNothingWaiting) {
  auto sock = receiver::make("ch", log_file::make_null());
  EXPECT_EQ(receiver::make("ch", log_file::make_null()), nullptr);
  EXPECT_TRUE(receiver::is_occupied("ch", log_file::make_null()));
  EXPECT_FALSE(receiver::is_occupied("other", log_file::make_null()));
  EXPECT_FALSE(std::filesystem::exists(ReceiverLock("other"))) << "the probe left its file";
  // Even an unterminated tail keeps the receiver open; it leaves the file for the buffer.
  PutData("tail only");
  sock->close_if_empty();
  EXPECT_FALSE(sock->closed());
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
  sock.reset();
  sock = receiver::make("ch", log_file::make_null());
  sock->close_if_empty();
  EXPECT_TRUE(sock->closed());
  EXPECT_EQ(sock->op(), nullptr);
  EXPECT_FALSE(receiver::is_occupied("ch", log_file::make_null()));
  // Locks that can never be had throw instead of waiting: a folder where each lock goes.
  std::filesystem::create_directories(ReceiverLock("never"));
  EXPECT_TRUE(receiver::is_occupied("never", log_file::make_null()));
  EXPECT_THROW(receiver::await_until_occupied("never", log_file::make_null()),
               platform::IOException);
  std::filesystem::create_directories(EntryLock("x"));
  EXPECT_THROW(receiver::make("x", log_file::make_null())->try_op(), platform::IOException);
}

}  // namespace
