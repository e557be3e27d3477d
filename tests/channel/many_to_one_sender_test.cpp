// The channel's layout on disk and its sending end: names, bytes, the entry lock's life, faults.

#include "channel/many_to_one_sender.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "platform/exceptions.h"

namespace {

using many_to_one::sender;
using platform::FolderItem;
using SenderTest = qem_test::ChannelTest;

std::shared_ptr<sender> MakeSender(const std::string& id) {
  return std::make_shared<sender>(id, log_file::make_null());
}

TEST_F(SenderTest, RecordsAreTextAndOneNulInTheDataFileOfTheChannelFolder) {
  auto sock = MakeSender("ch");
  EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "a sender alone touches no file";
  for (const char* text : {"a", "", "b"}) MakeSender("ch")->op()->write(text);
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("a\0\0b\0", 5));
  // Nothing else in the channel folder, and no entry lock file once the ops are gone.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Folder("ch")), {}), 1);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
}

TEST_F(SenderTest, OpHoldsTheEntryLockForExactlyItsOwnLife) {
  auto op = MakeSender("ch")->op();
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // made under the lock
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));         // an op that writes nothing
  EXPECT_EQ(lock_file::make(FolderItem(EntryLock("ch")), log_file::make_null()), nullptr);
  op->write("x");
  op->write("y");  // several writes in one op form one critical section
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("x\0y\0", 4));
  op.reset();
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // the folder stays for good
}

TEST_F(SenderTest, ChannelFilesArePrivateAndASymbolicLinkAtTheDataFileIsRefused) {
  MakeSender("ch")->op()->write("secret");
  for (auto [path, mode] : {std::pair{Folder("ch"), 0700u}, std::pair{Data("ch"), 0600u}}) {
    struct stat st;
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, mode) << path;
  }
  // A link planted in the data file's place: neither end writes or reads through it.
  auto sock = many_to_one::receiver::make("ch", log_file::make_null());
  std::filesystem::remove(Data("ch"));
  qem_test::WriteFile(root() / "theirs", "theirs");
  std::filesystem::create_symlink(root() / "theirs", Data("ch"));
  try {
    MakeSender("ch")->op()->write("mine");
    ADD_FAILURE() << "written through a symbolic link";
  } catch (const platform::NilObjectException& e) {
    EXPECT_NE(std::string(e.what()).find(Data("ch").string() + " for appending: it is a symbolic"),
              std::string::npos)
        << e.what();
  }
  EXPECT_THROW(sock->op()->read(), platform::NilObjectException);
  EXPECT_EQ(sock->buffer(), "");
  EXPECT_EQ(qem_test::ReadFile(root() / "theirs"), "theirs");
}

TEST_F(SenderTest, FaultsLeaveTheOpAndReleaseTheEntryLock) {
  // A data file that can't be opened: nothing is added, and the lock goes with the op.
  std::filesystem::create_directories(Data("ch"));  // a folder where the file should be
  EXPECT_THROW(MakeSender("ch")->op()->write("lost"), platform::NilObjectException);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
  // An entry lock that can never be had throws at once instead of waiting for ever.
  std::filesystem::create_directories(EntryLock("dir"));
  EXPECT_THROW(MakeSender("dir")->op(), platform::IOException);
  // The abstract endpoint has no op of its own.
  EXPECT_THROW(std::make_shared<many_to_one::base>("ch", log_file::make_null())->op(),
               platform::RuntimeException);
}

}  // namespace
