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

TEST_F(SenderTest, ChannelFolderAndDataFileArePrivateToTheUser) {
  MakeSender("ch")->op()->write("secret");
  const struct {
    std::filesystem::path path;
    unsigned mode;
  } rows[] = {{Folder("ch"), 0700}, {Data("ch"), 0600}};
  for (const auto& row : rows) {
    struct stat st;
    ASSERT_EQ(::stat(row.path.c_str(), &st), 0) << row.path;
    EXPECT_EQ(st.st_mode & 0777, row.mode) << row.path;
  }
}

TEST_F(SenderTest, SymbolicLinkAtTheDataFileIsRefusedByBothEnds) {
  auto sock = many_to_one::receiver::make("ch", log_file::make_null());
  ASSERT_NE(sock, nullptr);
  std::filesystem::create_directories(Folder("ch"));
  const auto target = root() / "elsewhere";
  for (bool target_exists : {true, false}) {
    SCOPED_TRACE(target_exists ? "link to a file" : "dangling link");
    if (target_exists) qem_test::WriteFile(target, "theirs");
    std::filesystem::create_symlink(target, Data("ch"));
    try {
      MakeSender("ch")->op()->write("mine");
      ADD_FAILURE() << "written through a symbolic link";
    } catch (const platform::NilObjectException& e) {
      std::string what = e.what();
      EXPECT_NE(what.find(Data("ch").string()), std::string::npos) << what;
      EXPECT_NE(what.find("symbolic link"), std::string::npos) << what;
    }
    EXPECT_THROW(sock->op()->read(), platform::NilObjectException);
    EXPECT_EQ(sock->buffer(), "");
    EXPECT_EQ(qem_test::ReadFile(target), target_exists ? "theirs" : "<missing>");
    EXPECT_TRUE(std::filesystem::is_symlink(Data("ch")));
    std::filesystem::remove(Data("ch"));
    std::filesystem::remove(target);
  }
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
