// lock_file between real processes: exclusion under load, and children that must not inherit a
// lock.

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "channel/lock_file.h"
#include "channel/log_file.h"
#include "support/process.h"
#include "support/temp_env.h"

namespace {

using namespace std::chrono_literals;
using platform::FolderItem;
using LockProcessTest = qem_test::TempEnvTest;

const std::string kHelper = QEM_CHANNEL_HELPER;

TEST_F(LockProcessTest, CounterUnderTheLockIsExactAcrossEightProcesses) {
  constexpr int kProcesses = 8;
  constexpr int kRounds = 300;
  auto counter = root() / "counter";
  qem_test::WriteFile(counter, "0");
  std::vector<qem_test::Child> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(qem_test::Spawn({kHelper, "lock-count", (tmp() / "count.lock").string(),
                                        counter.string(), std::to_string(kRounds)}));
  }
  // Status 4 or 5 would mean a held lock without its file, or a file that is not empty.
  for (auto& child : children) EXPECT_EQ(child.Wait(120s), 0);
  EXPECT_EQ(qem_test::ReadFile(counter), std::to_string(kProcesses * kRounds));
  EXPECT_FALSE(std::filesystem::exists(tmp() / "count.lock"));
}

TEST_F(LockProcessTest, ChildOfAHolderDoesNotKeepTheLockAlive) {
  // The holder starts a child of its own, then writes its pid to "ready".
  auto path = tmp() / "parent.lock", ready = root() / "ready";
  auto holder = qem_test::Spawn({kHelper, "hold-lock", path, ready, "spawn"});
  ASSERT_TRUE(qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 30s));
  pid_t grandchild = static_cast<pid_t>(std::stol(qem_test::ReadFile(ready)));
  ASSERT_GT(grandchild, 0);
  holder.Kill(SIGKILL);
  EXPECT_EQ(holder.Wait(30s), 128 + SIGKILL);
  // The child started by the holder is still running; had it inherited the descriptor, the lock
  // on the leftover file would still be held.
  EXPECT_EQ(::kill(grandchild, 0), 0);
  auto lock = lock_file::make(FolderItem(path), log_file::make_null());
  EXPECT_NE(lock, nullptr);
  ::kill(grandchild, SIGKILL);
}

}  // namespace
