// Launch, with real processes: the copy it starts serves, under the launch lock named after the
// stay-alive key, and quits when the box is cleared; a path that can't be started starts nothing.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "console_fixture.h"
#include "support/process.h"

namespace {

using namespace std::chrono_literals;

class Launch : public qem_test::ConsoleTest {
 protected:
  void TearDown() override {
    // Whatever the test did, a copy it started sees its stay-alive lock go with the console and
    // must be gone before its folders are.
    console.reset();
    EXPECT_TRUE(qem_test::WaitUntil([] { return !Occupied("alive.launched"); }, 30s));
    ConsoleTest::TearDown();
  }
};

TEST_F(Launch, StartsACopyThatServesAndQuitsWhenTheBoxIsCleared) {
  console->tfstay_alive_key().Text("alive");
  ClickLockBox();
  console->tfchannel().Text("cmd");
  console->tfpath().Text(QEM_UTIL_PATH);
  Click(console->pblaunch());
  ASSERT_TRUE(qem_test::WaitUntil([] { return Occupied("alive.launched"); }, 30s));
  EXPECT_FALSE(qem_test::WaitUntil([] { return !Occupied("alive.launched"); }, 300ms))
      << "the copy let go of its launch lock while still wanted";
  ClickLockBox();
  EXPECT_TRUE(qem_test::WaitUntil([] { return !Occupied("alive.launched"); }, 30s));
  EXPECT_FALSE(std::filesystem::exists(tmp() / "alive.launched"));
}

TEST_F(Launch, APathThatCantBeStartedStartsNothing) {
  const struct {
    const char* name;
    const char* path;
    std::string said;
  } cases[] = {
      {"empty", "", ""},
      {"relative", "qem_util", ""},
      {"missing", "/no/such/qem_util",
       "qem_util: Cannot start /no/such/qem_util: No such file or directory\n"},
      {"folder", "/", "qem_util: Cannot start /: it is a folder\n"},
  };
  console->tfstay_alive_key().Text("alive");
  ClickLockBox();
  for (const auto& c : cases) {
    console->tfpath().Text(c.path);
    testing::internal::CaptureStderr();
    Click(console->pblaunch());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), c.said) << c.name;
  }
  EXPECT_FALSE(Occupied("alive.launched"));
}

}  // namespace
