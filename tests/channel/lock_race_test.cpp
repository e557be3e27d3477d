// The release race, driven through the real attempt. Two orders of release meet on one name: ours
// (delete while still holding, then close) and the peer's (close, then delete). A party that
// opened the old file as its holder let go must not count its lock once the name is gone; a lock
// that lost its name after it was had must never take a newer holder's name, nor its records,
// with it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel/many_to_one_sender.h"
#include "channel_fixture.h"
#include "flock_probe.h"

namespace {

using platform::FolderItem;
using LockRaceTest = qem_test::ChannelTest;

// The peer's side of a lock, with raw calls: open and lock; released in its own order, close
// first and delete after, each step when the test says.
class PeerLock {
 public:
  explicit PeerLock(std::filesystem::path path) : path_(std::move(path)) {
    fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0777);
    if (fd_ >= 0 && ::flock(fd_, LOCK_EX | LOCK_NB) != 0) Close();
  }
  ~PeerLock() { Close(); }
  bool held() const { return fd_ >= 0; }
  void Close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
  }
  void Delete() { ::unlink(path_.c_str()); }

 private:
  std::filesystem::path path_;
  int fd_ = -1;
};

std::shared_ptr<lock_file> Make(const FolderItem& file) {
  return lock_file::make(file, log_file::make_null());
}

TEST_F(LockRaceTest, PartyThatOpenedTheReleasedFileNeverHolds) {
  const struct {
    const char* name;
    bool peer_order;  // the holder closes, then deletes; else ours: delete, then close
    bool new_holder;  // C takes a new file before B asks for the lock
  } rows[] = {
      {"ours, a new holder came", false, true},
      {"ours, the name is gone", false, false},
      {"the peer's, a new holder came", true, true},
      {"the peer's, the name is gone", true, false},
  };
  FolderItem file(tmp() / "race");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    std::shared_ptr<lock_file> a, c;
    PeerLock peer(file.Path());
    if (!row.peer_order) {
      peer.Close();
      a = Make(file);
      ASSERT_NE(a, nullptr);
    }
    ASSERT_NE(peer.held(), a != nullptr);
    // B has opened A's file and is about to ask for the lock: A lets go, C may take a new file.
    qem_test::BeforeNextFlock([&] {
      if (row.peer_order) {
        peer.Close();
        peer.Delete();
      }
      a.reset();
      if (row.new_holder) c = Make(file);
    });
    auto b = std::make_shared<lock_file>(file, log_file::make_null());
    EXPECT_EQ(qem_test::LastFlockResult(), 0) << "the system granted B the orphaned file";
    EXPECT_TRUE(b->failed());
    EXPECT_TRUE(lock_file::is_contention(b->error_number()));
    b.reset();
    // B's failed attempt leaves C's file alone, and C stays the only holder.
    EXPECT_EQ(std::filesystem::exists(file.Path()), row.new_holder);
    EXPECT_EQ(Make(file) == nullptr, row.new_holder);
  }
}

TEST_F(LockRaceTest, LockTakenInsideThePeersReleaseCannotCascade) {
  FolderItem file(tmp() / "race");
  PeerLock a(file.Path());
  ASSERT_TRUE(a.held());
  // B has opened A's file; A closes it now and deletes it only after B's check of the name.
  qem_test::BeforeNextFlock([&] { a.Close(); });
  auto b = Make(file);
  ASSERT_NE(b, nullptr) << "B took the lock between the peer's close and its delete";
  a.Delete();
  // No check of ours can see this coming: C makes a new file, and B and C both hold.
  auto c = Make(file);
  ASSERT_NE(c, nullptr);
  // But B's release must not take C's name with it, or D gets in while C still holds.
  b.reset();
  EXPECT_TRUE(std::filesystem::exists(file.Path())) << "B's release deleted C's file";
  EXPECT_EQ(Make(file), nullptr) << "D holds while C still holds";
  c.reset();
  EXPECT_FALSE(std::filesystem::exists(file.Path()));
}

TEST_F(LockRaceTest, OpWhoseEntryLockLostItsNameLeavesTheDataFileInPlace) {
  auto sock = many_to_one::receiver::make("ch", log_file::make_null());
  ASSERT_NE(sock, nullptr);
  auto send = [](const char* text) {
    std::make_shared<many_to_one::sender>("ch", log_file::make_null())->op()->write(text);
  };
  send("one");
  // A peer's sender holds the entry lock and lets go in its order; our op takes the lock between
  // its close and its delete, and a sender of ours then gets in beside it.
  PeerLock peer(EntryLock("ch"));
  ASSERT_TRUE(peer.held());
  qem_test::BeforeNextFlock([&] { peer.Close(); });
  auto op = sock->op();
  peer.Delete();
  send("two");
  // Deleting the data file now could take a record appended under the other lock: it stays, so
  // records may come twice but are never lost.
  EXPECT_EQ(op->read(), "one");
  op->purge();
  EXPECT_EQ(qem_test::ReadFile(Data("ch")), std::string("one\0two\0", 8));
  op.reset();
  for (const char* text : {"two", "one", "two", ""}) EXPECT_EQ(sock->op()->read(), text);
  EXPECT_FALSE(std::filesystem::exists(Data("ch")));
}

TEST_F(LockRaceTest, AwaitOnAHeldLockMakesExactlyOneAttempt) {
  auto held = lock_file::make("held", log_file::make_null());
  ASSERT_NE(held, nullptr);
  int before = qem_test::FlockCalls();
  lock_file::await_occupied_by_other("held", log_file::make_null());
  EXPECT_EQ(qem_test::FlockCalls() - before, 1);
}

}  // namespace
