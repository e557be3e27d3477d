// The release race, driven through the real attempt: a party that opened the old file just before
// its holder let go must not count its lock, whether or not a new holder has come meanwhile.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "channel/lock_file.h"
#include "flock_probe.h"
#include "platform/clock.h"
#include "support/temp_env.h"

namespace {

using platform::FolderItem;
using LockRaceTest = qem_test::TempEnvTest;

TEST_F(LockRaceTest, PartyThatOpenedTheReleasedFileNeverHolds) {
  for (bool new_holder : {true, false}) {
    SCOPED_TRACE(new_holder ? "a new holder came" : "the name is gone");
    FolderItem file(tmp() / "race");
    auto a = lock_file::make(file, log_file::make_null());
    ASSERT_NE(a, nullptr);
    std::shared_ptr<lock_file> c;
    // B has opened A's file and is about to ask for the lock: A lets go, C may take a new file.
    qem_test::BeforeNextFlock([&] {
      a.reset();
      if (new_holder) c = lock_file::make(file, log_file::make_null());
    });
    auto b = std::make_shared<lock_file>(file, log_file::make_null());
    EXPECT_EQ(qem_test::LastFlockResult(), 0) << "the system granted B the orphaned file";
    EXPECT_TRUE(b->failed());
    EXPECT_TRUE(lock_file::is_contention(b->error_number()));
    b.reset();
    // B's failed attempt leaves C's file alone, and C stays the only holder.
    EXPECT_EQ(std::filesystem::exists(tmp() / "race"), new_holder);
    EXPECT_EQ(lock_file::make(file, log_file::make_null()) == nullptr, new_holder);
  }
}

TEST_F(LockRaceTest, AwaitOnAHeldLockMakesExactlyOneAttempt) {
  auto held = lock_file::make("held", log_file::make_null());
  ASSERT_NE(held, nullptr);
  int before = qem_test::FlockCalls();
  lock_file::await_occupied_by_other("held", log_file::make_null());
  EXPECT_EQ(qem_test::FlockCalls() - before, 1);
}

TEST_F(LockRaceTest, OccupyAttemptsAtOnceAndSleepsOnlyAfterFindingTheLockHeld) {
  // A free lock costs one attempt and no sleep: twenty of them take well under the 660 ms that
  // a sleep before each first attempt would cost at the least.
  const double start = platform::Microseconds();
  for (int i = 0; i < 20; ++i) {
    int before = qem_test::FlockCalls();
    EXPECT_NE(lock_file::occupy("free", log_file::make_null()), nullptr);
    EXPECT_EQ(qem_test::FlockCalls() - before, 1);
  }
  EXPECT_LT(platform::Microseconds() - start, 330'000);
  // A held lock is tried again after a sleep, not in a tight loop: while it is held for 200 ms
  // there are a handful of attempts, where a wait that never slept would make thousands.
  auto held = lock_file::make("busy", log_file::make_null());
  ASSERT_NE(held, nullptr);
  std::thread releaser([&held] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    held.reset();
  });
  int before = qem_test::FlockCalls();
  auto lock = lock_file::occupy("busy", log_file::make_null());
  releaser.join();
  EXPECT_NE(lock, nullptr);
  EXPECT_GE(qem_test::FlockCalls() - before, 2);
  EXPECT_LE(qem_test::FlockCalls() - before, 100);
}

}  // namespace
