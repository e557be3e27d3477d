// The command server as a process shows it from outside, offscreen: what it reads it reports on
// stderr when a command has a key it can't use, so a test sees which commands were handled.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
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

class Server : public qem_test::HelperTest {
 protected:
  void SetUp() override {
    HelperTest::SetUp();
    alive = lock_file::make("alive", log_file::make_null());
    ASSERT_NE(alive, nullptr);
  }
  bool Said(const std::string& text) {
    return WaitUntil([&] { return Stderr().find(text) != std::string::npos; }, 20s);
  }
  std::shared_ptr<lock_file> alive;
};

TEST_F(Server, LeftoversArePurgedBeforeTheLaunchLockSaysUp) {
  Send({Telltale("stale")});
  auto helper = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return Occupied("launched"); }, 20s));
  EXPECT_FALSE(std::filesystem::exists(prefs() / "qem.many_to_one.cmd.dir" / "data"));
  Send({Telltale("fresh")});
  EXPECT_TRUE(Said("\"fresh\"")) << Stderr();
  EXPECT_EQ(Stderr().find("stale"), std::string::npos) << Stderr();
}

TEST_F(Server, ASecondHelperOnTheChannelExitsWithStatusThreeAndNeverSaysUp) {
  auto first = StartHelper(ServerArgs());
  ASSERT_TRUE(WaitUntil([] { return Occupied("launched"); }, 20s));
  auto second =
      StartHelper({"--stay-alive-key=alive", "--channel=cmd", "--launch-key=second"}, "second.txt");
  EXPECT_EQ(second.Wait(20s), 3);
  const std::string said = Stderr("second.txt");
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_NE(said.find("\"cmd\""), std::string::npos) << said;
  EXPECT_FALSE(std::filesystem::exists(tmp() / "second"));
  // The first one goes on serving.
  Send({Telltale("still")});
  EXPECT_TRUE(Said("\"still\"")) << Stderr();
  EXPECT_TRUE(first.Running());
}

TEST_F(Server, AChannelFolderThatOthersMayWriteToEndsTheHelperWithStatusFour) {
  const auto folder = prefs() / "qem.many_to_one.cmd.dir";
  std::filesystem::create_directory(folder);
  std::filesystem::permissions(folder, std::filesystem::perms::all);
  EXPECT_EQ(StartHelper(ServerArgs()).Wait(20s), 4);
  const std::string said = Stderr();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
  EXPECT_NE(said.find(folder.string() + " is refused"), std::string::npos) << said;
  EXPECT_FALSE(std::filesystem::exists(tmp() / "launched"));
}

}  // namespace
