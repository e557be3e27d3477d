// The release race, driven deterministically through the real attempt: a party that opened the
// old file just before its holder let go must not count its lock once a new holder exists.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "flock_probe.h"
#include "support/temp_env.h"

namespace {

using platform::FolderItem;
using LockRaceTest = qem_test::TempEnvTest;

TEST_F(LockRaceTest, PartyThatOpenedTheReleasedFileNeverHoldsBesideTheNewHolder) {
  FolderItem file(tmp() / "race");
  auto a = lock_file::make(file, log_file::make_null());
  ASSERT_NE(a, nullptr);
  std::shared_ptr<lock_file> c;
  // B's attempt has opened the old file (A's) and is about to ask for the lock. In that moment
  // A lets go and C makes a new file under the same name and locks it.
  qem_test::BeforeNextFlock([&] {
    a.reset();
    c = lock_file::make(file, log_file::make_null());
  });
  auto b = std::make_shared<lock_file>(file, log_file::make_null());
  ASSERT_NE(c, nullptr) << "C must get the new file";
  // The operating system did grant B its lock, on the old file that has lost its name ...
  EXPECT_EQ(qem_test::LastFlockResult(), 0);
  // ... and the attempt refuses to count it: B and C never both hold.
  EXPECT_TRUE(b->failed());
  EXPECT_TRUE(lock_file::is_contention(b->error_number()));
  // B's failed attempt leaves C's file alone, and C is still the only holder.
  b.reset();
  EXPECT_TRUE(std::filesystem::exists(tmp() / "race"));
  EXPECT_EQ(lock_file::make(file, log_file::make_null()), nullptr);
  c.reset();
  EXPECT_FALSE(std::filesystem::exists(tmp() / "race"));
}

TEST_F(LockRaceTest, PartyThatOpenedTheReleasedFileWithNoNewHolderStillDoesNotHold) {
  // With the name gone altogether, the lock on the orphaned file is worth nothing either.
  FolderItem file(tmp() / "race");
  auto a = lock_file::make(file, log_file::make_null());
  ASSERT_NE(a, nullptr);
  qem_test::BeforeNextFlock([&] { a.reset(); });
  auto b = std::make_shared<lock_file>(file, log_file::make_null());
  EXPECT_EQ(qem_test::LastFlockResult(), 0);
  EXPECT_TRUE(b->failed());
  EXPECT_NE(lock_file::make(file, log_file::make_null()), nullptr);
}

TEST_F(LockRaceTest, AwaitOnHeldLockMakesExactlyOneAttempt) {
  auto held = lock_file::make("held", log_file::make_null());
  ASSERT_NE(held, nullptr);
  int before = qem_test::FlockCalls();
  lock_file::await_occupied_by_other("held", log_file::make_null());
  EXPECT_EQ(qem_test::FlockCalls() - before, 1);
}

}  // namespace
