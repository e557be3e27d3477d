// The channel's layout on disk and its sending end: names, bytes, the entry lock's life.

#include "channel/many_to_one_sender.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "channel_fixture.h"
#include "platform/exceptions.h"

namespace {

using many_to_one::sender;
using platform::FolderItem;
using SenderTest = qem_test::ChannelTest;

std::shared_ptr<sender> MakeSender(const std::string& id,
                                   std::shared_ptr<log_file> log = log_file::make_null()) {
  return std::make_shared<sender>(id, std::move(log));
}

void Send(const std::string& id, const std::string& text) {
  MakeSender(id)->op()->write(text);
}

TEST_F(SenderTest, RecordsAreTextAndOneNulInTheDataFileOfTheChannelFolder) {
  auto sock = MakeSender("ch");
  EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "a sender alone touches no file";
  Send("ch", "a");
  Send("ch", "");
  Send("ch", "b");
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("a\0\0b\0", 5));
  // Nothing else in the channel folder, and no entry lock file once the ops are gone.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Folder("ch")), {}), 1);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  EXPECT_EQ(sock->entry_mutex().NativePath(), EntryLock("ch").string());
}

TEST_F(SenderTest, OpHoldsTheEntryLockForExactlyItsOwnLife) {
  auto sock = MakeSender("ch");
  auto op = sock->op();
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // made under the lock
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));         // an op that writes nothing
  ASSERT_TRUE(std::filesystem::exists(EntryLock("ch")));
  EXPECT_EQ(std::filesystem::file_size(EntryLock("ch")), 0u);
  EXPECT_EQ(lock_file::make(FolderItem(EntryLock("ch")), log_file::make_null()), nullptr);
  EXPECT_EQ(op->folder().NativePath(), Folder("ch").string());
  EXPECT_EQ(op->data_file().NativePath(), Data("ch").string());
  EXPECT_EQ(&op->sock(), sock.get());
  op->write("x");
  op->write("y");  // several writes in one op form one critical section
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("x\0y\0", 4));
  op.reset();
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // the folder stays for good
}

TEST_F(SenderTest, WriteLogsItsStepsAndAtMostAThousandCharactersOfData) {
  auto log_path = root() / "send.log";
  auto sock = MakeSender("ch", std::make_shared<log_file>(FolderItem(log_path)));
  std::string long_text;
  for (int i = 0; i < 600; ++i) long_text += "\xC3\xA9";  // 600 two-byte characters
  long_text += std::string(500, 'z');
  {
    auto op = sock->op();
    op->write("short");
    op->write(long_text);
  }
  std::string data = Data("ch").string();
  auto messages = qem_test::LoggedMessages(log_path);
  ASSERT_EQ(messages.size(), 8u);
  EXPECT_EQ(messages[0], "Waiting to lock " + EntryLock("ch").string());
  EXPECT_TRUE(std::regex_match(messages[1], std::regex("Locked .*; took \\d+"))) << messages[1];
  EXPECT_EQ(messages[2], "Starting to write data to " + data + ".");
  EXPECT_EQ(messages[3], std::string("Data: short\0", 12));  // short texts keep their NUL
  EXPECT_EQ(messages[4], "Finished writing data to " + data + ".");
  EXPECT_EQ(messages[5], messages[2]);
  EXPECT_EQ(messages[6], "Data: " + long_text.substr(0, 1200 + 400));  // 1000 characters
  EXPECT_EQ(messages[7], messages[4]);
}

TEST_F(SenderTest, FaultsLeaveTheOpAndReleaseTheEntryLock) {
  // A data file that can't be opened: nothing is added, and the lock goes with the op.
  auto sock = MakeSender("ch");
  std::filesystem::create_directories(Data("ch"));  // a folder where the file should be
  EXPECT_THROW(sock->op()->write("lost"), platform::NilObjectException);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  // An entry lock that can never be had throws at once instead of waiting for ever.
  std::filesystem::create_directories(EntryLock("dir"));
  EXPECT_THROW(MakeSender("dir")->op(), platform::IOException);
}

TEST_F(SenderTest, OpOnTheAbstractEndpointThrowsAndEachEndGivesItsOwnOp) {
  std::shared_ptr<many_to_one::base> plain =
      std::make_shared<many_to_one::base>("ch", log_file::make_null());
  EXPECT_THROW(plain->op(), platform::RuntimeException);
  std::shared_ptr<many_to_one::base> end = MakeSender("ch");
  auto op = end->op();
  EXPECT_NE(dynamic_cast<many_to_one::sender_op*>(op.get()), nullptr);
}

}  // namespace
