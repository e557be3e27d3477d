#include "platform/lock_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>

#include "support/process.h"
#include "support/temp_env.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Seen = platform::LockWatch::Seen;
using LockWatchTest = qem_test::TempEnvTest;

// A descriptor of its own that holds the lock of `file`, as another party holds it.
int Hold(const fs::path& file) {
  const int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  EXPECT_EQ(::flock(fd, LOCK_EX | LOCK_NB), 0);
  return fd;
}

// What the watch tells within 20 s, drained; Nothing when it tells nothing.
Seen Told(platform::LockWatch& watch) {
  pollfd ready{watch.Descriptor(), POLLIN, 0};
  return ::poll(&ready, 1, 20'000) > 0 ? watch.Drain() : Seen::Nothing;
}

TEST_F(LockWatchTest, TellsOnceTheLockIsFreeHoldingNothingDeletingNothingFollowingNoLink) {
  const fs::path file = tmp() / "alive";
  int holder = Hold(file);
  auto watch = std::make_unique<platform::LockWatch>();
  ASSERT_TRUE(watch->Watch(platform::FolderItem(file)));
  ASSERT_TRUE(qem_test::WaitUntil([&] { return qem_test::WaitsForLock(::getpid(), file); }, 20s));
  ::close(holder);
  EXPECT_EQ(Told(*watch), Seen::Free);
  EXPECT_TRUE(fs::exists(file)) << "the watch deleted the file";
  EXPECT_FALSE(qem_test::LockHeld("alive")) << "the watch kept the lock";

  // Taken again and watched again: a watch that goes while it waits ends its wait and takes
  // nothing from the holder.
  holder = Hold(file);
  ASSERT_TRUE(watch->Watch(platform::FolderItem(file)));
  ASSERT_TRUE(qem_test::WaitUntil([&] { return qem_test::WaitsForLock(::getpid(), file); }, 20s));
  watch.reset();
  EXPECT_TRUE(qem_test::LockHeld("alive"));
  ::close(holder);

  // A missing file is free; a symbolic link is never followed.
  platform::LockWatch missing, link;
  ASSERT_TRUE(missing.Watch(platform::FolderItem(tmp() / "gone")));
  EXPECT_EQ(Told(missing), Seen::Free);
  fs::create_symlink(root(), tmp() / "link");
  ASSERT_TRUE(link.Watch(platform::FolderItem(tmp() / "link")));
  EXPECT_EQ(Told(link), Seen::Failed);
  EXPECT_EQ(link.Error(), ELOOP);
}

}  // namespace
