// The release race, driven through the real attempt: a party that opened the old file just before
// its holder let go must not count its lock, whether or not a new holder has come meanwhile.

#include <gtest/gtest.h>

#include <filesystem>

#include "channel/lock_file.h"
#include "flock_probe.h"
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

}  // namespace
