// The release race, driven through the real attempt, in both orders of release: ours (delete,
// then close) and the peer's (close, then delete; played here with raw calls). A party that
// opened the old file just before its holder let go must not count its lock; a lock that lost
// its name afterwards must take neither a newer holder's file nor its records with it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>
#include <utility>

#include "channel/lock_file.h"
#include "channel/many_to_one_receiver.h"
#include "channel_fixture.h"
#include "platform/clock.h"
#include "support/process.h"

namespace {

// A seam in the lock attempt: this binary defines flock(2) itself, so every attempt made by the
// code under test passes through it. It counts the calls and runs the hook, once, just before
// the real lock is asked for; the hook is cleared first, so locks it takes go straight through.
std::function<void()>& BeforeNextFlock() {
  static std::function<void()> hook;
  return hook;
}
int flock_calls = 0;
int last_flock_result = 0;

}  // namespace

extern "C" int flock(int fd, int operation) {
  ++flock_calls;
  if (auto hook = std::exchange(BeforeNextFlock(), nullptr)) hook();
  last_flock_result = static_cast<int>(::syscall(SYS_flock, fd, operation));
  return last_flock_result;
}

namespace {

using platform::FolderItem;
using LockRaceTest = qem_test::ChannelTest;

// The peer takes a lock: open and flock, as it does. Gives the descriptor.
int PeerTakes(const std::filesystem::path& path) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0777);
  EXPECT_EQ(::flock(fd, LOCK_EX | LOCK_NB), 0);
  return fd;
}

TEST_F(LockRaceTest, PartyThatOpenedTheReleasedFileNeverHolds) {
  for (bool new_holder : {true, false}) {
    SCOPED_TRACE(new_holder ? "a new holder came" : "the name is gone");
    FolderItem file(tmp() / "race");
    auto a = lock_file::make(file, log_file::make_null());
    std::shared_ptr<lock_file> c;
    // B has opened A's file and is about to ask for the lock: A lets go, C may take a new file.
    BeforeNextFlock() = [&] {
      a.reset();
      if (new_holder) c = lock_file::make(file, log_file::make_null());
    };
    auto b = std::make_shared<lock_file>(file, log_file::make_null());
    EXPECT_EQ(last_flock_result, 0) << "the system granted B the orphaned file";
    EXPECT_TRUE(lock_file::is_contention(b->error_number()));
    b.reset();
    // B's failed attempt leaves C's file alone, and C stays the only holder.
    EXPECT_EQ(std::filesystem::exists(tmp() / "race"), new_holder);
    EXPECT_EQ(qem_test::LockHeld("race"), new_holder);
  }
}

TEST_F(LockRaceTest, LockTakenInsideThePeersReleaseCannotCascade) {
  FolderItem file(tmp() / "race");
  int a = PeerTakes(file.Path());
  // B has opened A's file; A closes it now and deletes it only after B's check of the name.
  BeforeNextFlock() = [&] { ::close(a); };
  auto b = lock_file::make(file, log_file::make_null());
  ASSERT_NE(b, nullptr);
  ::unlink(file.Path().c_str());
  // Nothing on this side can see it coming: C makes a new file, and B and C both hold.
  auto c = lock_file::make(file, log_file::make_null());
  ASSERT_NE(c, nullptr);
  b.reset();
  EXPECT_TRUE(qem_test::LockHeld("race")) << "B's release deleted C's file";
}

TEST_F(LockRaceTest, OpWhoseEntryLockLostItsNameLeavesTheDataFileInPlace) {
  auto sock = many_to_one::receiver::make("ch", log_file::make_null());
  qem_test::Send("ch", {"one"});
  // Our op takes the entry lock between a peer sender's close and its delete; then a sender of
  // ours gets in beside it and appends.
  int peer = PeerTakes(EntryLock("ch"));
  BeforeNextFlock() = [&] { ::close(peer); };
  auto op = sock->op();
  ::unlink(EntryLock("ch").c_str());
  qem_test::Send("ch", {"two"});
  // Deleting the file now could take records appended under the other lock: it stays, and what
  // was read comes again.
  EXPECT_EQ(op->read(), "one");
  op->purge();
  op.reset();
  for (const char* text : {"two", "one", "two", ""}) EXPECT_EQ(sock->op()->read(), text);
}

TEST_F(LockRaceTest, WaitsAttemptAtOnceAndSleepOnlyAfterFindingTheLockHeld) {
  auto attempts = [](const std::function<void()>& wait) {
    const int before = flock_calls;
    wait();
    return flock_calls - before;
  };
  // A free lock costs one attempt and no sleep: twenty of them take well under the 660 ms that
  // a sleep before each first attempt would cost at the least. A wait for a lock that is held
  // already ends after one attempt too.
  const double start = platform::Microseconds();
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(attempts([] { lock_file::occupy("free", log_file::make_null()); }), 1);
  }
  EXPECT_LT(platform::Microseconds() - start, 330'000);
  auto held = lock_file::make("busy", log_file::make_null());
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(attempts([] { lock_file::await_occupied_by_other("busy", log_file::make_null()); }), 1);
  // A held lock is tried again after a sleep, not in a tight loop: while it is held for 200 ms
  // there are a handful of attempts, where a wait that never slept would make thousands.
  std::thread releaser([&held] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    held.reset();
  });
  const int tries = attempts([] { lock_file::occupy("busy", log_file::make_null()); });
  releaser.join();
  EXPECT_GE(tries, 2);
  EXPECT_LE(tries, 100);
}

}  // namespace
