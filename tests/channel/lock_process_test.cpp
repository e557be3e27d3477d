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

// Starts a helper that takes the lock and holds it until killed; gives what it wrote to READY
// once it holds the lock.
std::string StartHolder(qem_test::Child& child, const std::filesystem::path& lock,
                        const std::filesystem::path& ready, bool spawn) {
  std::vector<std::string> argv = {kHelper, "hold-lock", lock.string(), ready.string()};
  if (spawn) argv.push_back("spawn");
  child = qem_test::Spawn(argv);
  bool up = qem_test::WaitUntil([&] { return std::filesystem::exists(ready); }, 30s);
  return up ? qem_test::ReadFile(ready) : std::string();
}

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
  auto path = tmp() / "parent.lock";
  qem_test::Child holder;
  std::string ready = StartHolder(holder, path, root() / "ready", true);
  ASSERT_FALSE(ready.empty());
  pid_t grandchild = static_cast<pid_t>(std::stol(ready));
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
