// The command server as a process shows it from outside, offscreen: what it reads it reports on
// stderr when a command has a key it can't use, so a test sees which commands were handled. Its
// lock files, and the memory that deleted windows leave, as the system sees them.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "helper_fixture.h"

namespace {

using namespace std::chrono_literals;
using qem_test::WaitUntil;

// A create whose style can't be used: the helper names its obj_id on stderr when it handles it.
std::string Telltale(const std::string& id) {
  return R"({"obj_id":")" + id + R"(","cmd":"create","type":"wprogress","style":{"x":1}})";
}

// A figure of a process's memory in kB: "VmRSS:" resident now, "VmHWM:" the most it ever was.
long MemoryKb(pid_t pid, const std::string& key) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key, 0) == 0) return std::stol(line.substr(key.size()));
  }
  return -1;
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
constexpr bool kSanitized = __has_feature(address_sanitizer);
#else
constexpr bool kSanitized = false;
#endif

class Server : public qem_test::HelperTest {
 protected:
  void SetUp() override {
    HelperTest::SetUp();
    alive = lock_file::make("alive", log_file::make_null());
    ASSERT_NE(alive, nullptr);
  }
  static bool Said(const qem_test::Kept& helper, const std::string& text) {
    return WaitUntil([&] { return helper.Err().find(text) != std::string::npos; }, 20s);
  }
  std::shared_ptr<lock_file> alive;
};

TEST_F(Server, ASecondHelperOnTheChannelExitsWithStatusThreeAndNeverSaysUp) {
  auto helper = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return qem_test::LockHeld("launched"); }, 20s));
  // A cleaner of the folders deletes the first one's lock files: it takes both again, so it
  // still says "up" and stays the one receiver of its channel.
  const auto receiver_lock = prefs() / "qem.many_to_one.r.cmd";
  std::filesystem::remove(tmp() / "launched");
  std::filesystem::remove(receiver_lock);
  ASSERT_TRUE(WaitUntil(
      [&] {
        return std::filesystem::exists(tmp() / "launched") &&
               std::filesystem::exists(receiver_lock);
      },
      20s));
  EXPECT_TRUE(qem_test::LockHeld("launched"));
  auto second =
      StartHelper({"--stay-alive-key=alive", "--channel=cmd", "--launch-key=second"}, "second");
  EXPECT_EQ(second.Wait(20s), 3);
  const std::string said = second.Err();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_NE(said.find("\"cmd\""), std::string::npos) << said;
  EXPECT_FALSE(std::filesystem::exists(tmp() / "second"));
  // The first one goes on serving.
  qem_test::Send("cmd", {Telltale("still")});
  EXPECT_TRUE(Said(helper, "\"still\"")) << helper.Err();
  EXPECT_TRUE(helper.Running());
  EXPECT_EQ(helper.Err().find("receiver lock"), std::string::npos) << helper.Err();
}

TEST_F(Server, MemoryOfDeletedWindowsGoesBackToTheSystem) {
  if (kSanitized || !std::filesystem::exists("/proc/self/status")) {
    GTEST_SKIP() << "needs the system's allocator (the sanitizers' keeps freed memory) and /proc";
  }
  auto helper = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return qem_test::LockHeld("launched"); }, 20s));
  const long before = MemoryKb(helper.pid(), "VmRSS:");
  // The command's rest for windows w0 to w<count - 1>, then a telltale; true once all are handled.
  auto each = [&](int count, const std::string& rest, const std::string& mark) {
    std::vector<std::string> messages;
    for (int i = 0; i < count; ++i) {
      messages.push_back(R"({"obj_id":"w)" + std::to_string(i) + R"(","cmd":")" + rest);
    }
    messages.push_back(Telltale(mark));
    qem_test::Send("cmd", messages);
    return Said(helper, '"' + mark + '"');
  };
  const std::string create =
      R"(create","type":"wprogress","style":3,"btn_spec":[{"id":"a","text":"A"},{"id":"b","text":"B"}]})";
  // A few windows come and go first, as in a helper that has run a while: from then on the
  // allocator keeps what windows free in its heap, and only an explicit trim hands it back.
  ASSERT_TRUE(each(20, create, "warm") && each(20, R"(delete"})", "cool")) << helper.Err();
  ASSERT_TRUE(each(300, create, "made") && each(300, R"(delete"})", "gone")) << helper.Err();
  const long with = MemoryKb(helper.pid(), "VmHWM:");
  auto after = [&] { return MemoryKb(helper.pid(), "VmRSS:"); };
  EXPECT_TRUE(WaitUntil([&] { return after() - before < (with - before) / 3; }, 10s))
      << "RSS " << before << " kB before, at most " << with << " kB with the windows, " << after()
      << " kB after";
}

}  // namespace
