// lock_file: exclusion, the file's life, attempts that can never succeed, and a holder's child
// that must not keep the lock.

#include "channel/lock_file.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "platform/exceptions.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace {

using namespace std::chrono_literals;
using platform::FolderItem;
using LockFileTest = qem_test::TempEnvTest;

TEST_F(LockFileTest, HeldLockShutsOutEveryOtherAttemptAndReleaseRemovesItsFile) {
  qem_test::WriteFile(tmp() / "l", "");  // left by a holder that died: free for the taking
  ::chmod((tmp() / "l").c_str(), 0644);  // and made by the peer: used as it is
  auto mode = [&] { return static_cast<int>(std::filesystem::status(tmp() / "l").permissions()); };
  auto held = lock_file::make("l", log_file::make_null());
  ASSERT_NE(held, nullptr);
  EXPECT_EQ(mode(), 0644);
  // The lock belongs to the descriptor: a second attempt from this very process fails too, and
  // leaves the holder's empty file alone.
  auto second = std::make_shared<lock_file>(FolderItem(tmp() / "l"), log_file::make_null());
  EXPECT_TRUE(lock_file::is_contention(second->error_number()));
  second.reset();
  EXPECT_EQ(qem_test::ReadFile(tmp() / "l"), "");
  held.reset();
  EXPECT_FALSE(std::filesystem::exists(tmp() / "l"));
  held = lock_file::make("l", log_file::make_null());
  EXPECT_EQ(mode(), 0600) << "a lock file made here is the user's alone";
  EXPECT_THROW(lock_file(FolderItem(tmp() / "l2"), nullptr), platform::NilObjectException);
}

TEST_F(LockFileTest, AttemptsThatCanNeverSucceedGiveNilAndTheWaitsThrowAtOnce) {
  // Tests run with every permission, so "never" is made by a missing folder.
  const auto path = root() / "missing" / "l";
  FolderItem file(path);
  EXPECT_NO_THROW(EXPECT_EQ(lock_file::make(file, log_file::make_null()), nullptr));
  EXPECT_FALSE(lock_file::is_contention(lock_file(file, log_file::make_null()).error_number()));
  try {
    lock_file::occupy(file, log_file::make_null());
    ADD_FAILURE() << "occupy returned";
  } catch (const platform::IOException& e) {
    EXPECT_NE(std::string(e.what()).find(path.string()), std::string::npos) << e.what();
  }
  EXPECT_THROW(lock_file::await_occupied_by_other(file, log_file::make_null()),
               platform::IOException);
  EXPECT_FALSE(std::filesystem::exists(root() / "missing"));
  // The name forms in a temporary folder that is gone: nil again, never an exception.
  ::setenv("TMPDIR", (root() / "gone").c_str(), 1);
  EXPECT_NO_THROW(EXPECT_EQ(lock_file::make("l", log_file::make_null()), nullptr));
  // A name that is no file of its own in the temporary folder is no attempt at all.
  for (const char* name : {"", "../l"}) {
    EXPECT_THROW(lock_file::make(name, log_file::make_null()),
                 platform::UnsupportedFormatException);
  }
}

TEST_F(LockFileTest, ChildOfAHolderDoesNotKeepTheLockAlive) {
  // A holder of our own takes the lock, starts a program, tells its pid, and is killed without
  // letting go.
  int pid_pipe[2];
  ASSERT_EQ(::pipe(pid_pipe), 0);
  qem_test::Child holder(::fork());
  if (holder.pid() == 0) {
    auto lock = lock_file::make("parent.lock", log_file::make_null());
    auto program = qem_test::Spawn({"/bin/sleep", "60"});
    const pid_t pid = program.pid();
    if (lock == nullptr || ::write(pid_pipe[1], &pid, sizeof pid) != sizeof pid) ::_exit(1);
    for (;;) ::pause();
  }
  pid_t sleeper = 0;
  ASSERT_EQ(::read(pid_pipe[0], &sleeper, sizeof sleeper), static_cast<ssize_t>(sizeof sleeper));
  ::close(pid_pipe[0]), ::close(pid_pipe[1]);
  holder.Kill(SIGKILL);
  EXPECT_EQ(holder.Wait(30s), 128 + SIGKILL);
  // The program still runs; had it inherited the descriptor, the lock would be held for ever.
  EXPECT_EQ(::kill(sleeper, 0), 0);
  EXPECT_TRUE(qem_test::WaitUntil([] { return !qem_test::LockHeld("parent.lock"); }, 10s));
  ::kill(sleeper, SIGKILL);
}

}  // namespace
