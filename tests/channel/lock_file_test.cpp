// lock_file within one process: one attempt, the waits, their log texts, and the file itself.

#include "channel/lock_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <regex>

#include "channel/log_file.h"
#include "platform/clock.h"
#include "platform/exceptions.h"
#include "support/temp_env.h"

namespace {

using platform::FolderItem;

class LockFileTest : public qem_test::TempEnvTest {
 protected:
  FolderItem Item(const std::string& name) const { return FolderItem(tmp() / name); }
  std::shared_ptr<log_file> RealLog() const {
    return std::make_shared<log_file>(FolderItem(root() / "test.log"));
  }
  std::string LogText() const { return qem_test::ReadFile(root() / "test.log"); }
};

off_t SizeOf(const std::filesystem::path& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? st.st_size : -1;
}

TEST_F(LockFileTest, HeldLockKeepsAnEmptyFileAndShutsOutEveryOtherAttempt) {
  auto held = lock_file::make(Item("l"), log_file::make_null());
  ASSERT_NE(held, nullptr);
  EXPECT_FALSE(held->failed());
  EXPECT_EQ(held->f_name(), "l");
  EXPECT_EQ(held->nativepath(), (tmp() / "l").string());
  EXPECT_EQ(SizeOf(tmp() / "l"), 0);

  // The lock belongs to the descriptor: a second attempt from this very process fails too, and
  // the failed attempt leaves the holder's file alone.
  auto second = std::make_shared<lock_file>(Item("l"), log_file::make_null());
  EXPECT_TRUE(second->failed());
  EXPECT_TRUE(lock_file::is_contention(second->error_number()));
  EXPECT_EQ(lock_file::make("l", log_file::make_null()), nullptr);  // the same file by name
  second.reset();
  EXPECT_EQ(SizeOf(tmp() / "l"), 0);

  held.reset();
  EXPECT_FALSE(std::filesystem::exists(tmp() / "l"));
  EXPECT_NE(lock_file::make("l", log_file::make_null()), nullptr);
}

TEST_F(LockFileTest, LeftoverFileOfNobodyIsTakenOverAndRemovedOnRelease) {
  qem_test::WriteFile(tmp() / "stale", "");
  auto lock = lock_file::make("stale", log_file::make_null());
  ASSERT_NE(lock, nullptr);
  lock.reset();
  EXPECT_FALSE(std::filesystem::exists(tmp() / "stale"));
}

TEST_F(LockFileTest, AttemptThatCanNeverSucceedGivesNilAndRaisesNothing) {
  std::shared_ptr<lock_file> lock;
  EXPECT_NO_THROW(lock =
                      lock_file::make(FolderItem(root() / "missing" / "l"), log_file::make_null()));
  EXPECT_EQ(lock, nullptr);
  auto attempt =
      std::make_shared<lock_file>(FolderItem(root() / "missing" / "l"), log_file::make_null());
  EXPECT_TRUE(attempt->failed());
  EXPECT_EQ(attempt->error_number(), ENOENT);
  EXPECT_FALSE(lock_file::is_contention(attempt->error_number()));
  EXPECT_FALSE(std::filesystem::exists(root() / "missing"));
}

TEST_F(LockFileTest, ConstructorLogsItsOneMessage) {
  auto log = RealLog();
  auto lock = lock_file::make(Item("l"), log);
  EXPECT_NE(LogText().find("|lock_file.constructor: " + (tmp() / "l").string() + "\n"),
            std::string::npos)
      << LogText();
  EXPECT_THROW(lock_file(Item("l2"), nullptr), platform::NilObjectException);
}

TEST_F(LockFileTest, OccupyOnFreeLockSleepsFirstAndLogsStartAndEnd) {
  auto log = RealLog();
  double start = platform::Microseconds();
  auto lock = lock_file::occupy(Item("l"), log);
  double took = platform::Microseconds() - start;
  ASSERT_NE(lock, nullptr);
  EXPECT_GE(took, 33000.0);
  std::string path = (tmp() / "l").string();
  std::smatch m;
  std::string text = LogText();
  ASSERT_TRUE(std::regex_search(
      text, m, std::regex("\\|Waiting to lock (.*)\n.*\\|Locked (.*); took (\\d+)\n$")))
      << text;
  EXPECT_EQ(m[1], path);
  EXPECT_EQ(m[2], path);
  EXPECT_GE(std::stoll(m[3]), 33000);
  // Only the start and the end of the wait reach the caller's log: no attempt writes to it.
  EXPECT_EQ(text.find("lock_file.constructor"), std::string::npos);
}

TEST_F(LockFileTest, OccupyByNameWorksInTheTemporaryFolderAndLogsTheBareName) {
  auto log = RealLog();
  auto lock = lock_file::occupy("named", log);
  ASSERT_NE(lock, nullptr);
  EXPECT_TRUE(std::filesystem::exists(tmp() / "named"));
  std::string text = LogText();
  EXPECT_NE(text.find("|Waiting to lock named\n"), std::string::npos) << text;
  EXPECT_TRUE(std::regex_search(text, std::regex("\\|Locked named; took \\d+\n$"))) << text;
}

TEST_F(LockFileTest, AwaitOnHeldLockReturnsAndLogsConfirmation) {
  auto held = lock_file::make("held", log_file::make_null());
  ASSERT_NE(held, nullptr);
  auto log = RealLog();
  lock_file::await_occupied_by_other("held", log);
  std::string text = LogText();
  EXPECT_NE(text.find("|Await held occupied by other.\n"), std::string::npos) << text;
  EXPECT_TRUE(
      std::regex_search(text, std::regex("\\|Confirmed held occupied by other; took \\d+\n$")))
      << text;
  lock_file::await_occupied_by_other(Item("held"), log);
  EXPECT_NE(LogText().find("|Await " + (tmp() / "held").string() + " occupied by other.\n"),
            std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(tmp() / "held"));  // the holder's file is untouched
}

TEST_F(LockFileTest, WaitsThrowAtOnceWhereNoAttemptCanEverSucceed) {
  // Tests run with every permission, so "never writable" is made by a missing folder and by a
  // parent that is a regular file.
  qem_test::WriteFile(root() / "plain", "x");
  for (auto path : {root() / "missing" / "l", root() / "plain" / "l"}) {
    SCOPED_TRACE(path.string());
    try {
      lock_file::occupy(FolderItem(path), log_file::make_null());
      ADD_FAILURE() << "occupy returned";
    } catch (const platform::IOException& e) {
      EXPECT_NE(std::string(e.what()).find(path.string()), std::string::npos) << e.what();
      EXPECT_TRUE(e.ErrorNumber() == ENOENT || e.ErrorNumber() == ENOTDIR) << e.ErrorNumber();
    }
    EXPECT_THROW(lock_file::await_occupied_by_other(FolderItem(path), log_file::make_null()),
                 platform::IOException);
  }
}

}  // namespace
