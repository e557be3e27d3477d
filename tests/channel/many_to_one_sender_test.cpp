// The channel's layout on disk and its sending end: records, the entry lock's life, private
// files, and a fault that leaves nothing held.

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
using SenderTest = qem_test::ChannelTest;

std::shared_ptr<sender> MakeSender(const std::string& id) {
  return std::make_shared<sender>(id, log_file::make_null());
}

TEST_F(SenderTest, OpHoldsTheEntryLockForItsLifeAndAppendsEachTextAndOneNul) {
  auto sock = MakeSender("ch");
  EXPECT_TRUE(std::filesystem::is_empty(prefs())) << "a sender alone touches no file";
  auto op = sock->op();
  EXPECT_TRUE(std::filesystem::is_directory(Folder("ch")));  // made under the lock
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));         // an op that writes nothing
  EXPECT_EQ(lock_file::make(platform::FolderItem(EntryLock("ch")), log_file::make_null()), nullptr);
  for (const char* text : {"a", "", "b"}) op->write(text);  // one critical section
  op.reset();
  MakeSender("ch")->op()->write("c");
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("a\0\0b\0c\0", 7));
  // The folder stays with the data file alone in it, and the entry lock's file goes with the op.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Folder("ch")), {}), 1);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
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
  EXPECT_EQ(qem_test::ReadFile(root() / "theirs"), "theirs");
  // A data file that can't be opened at all: nothing is added, and the lock goes with the op.
  std::filesystem::remove(Data("ch"));
  std::filesystem::create_directories(Data("ch"));
  EXPECT_THROW(MakeSender("ch")->op()->write("lost"), platform::NilObjectException);
  EXPECT_FALSE(std::filesystem::exists(EntryLock("ch")));
}

}  // namespace
