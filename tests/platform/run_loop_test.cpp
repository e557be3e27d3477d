#include "platform/run_loop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "platform/event_guard.h"

namespace {

class RunLoop : public ::testing::Test {
 protected:
  int argc_ = 1;
  char name_[8] = "test";
  char* argv_[2] = {name_, nullptr};
};

TEST_F(RunLoop, QuitBeforeTheLoopStartsEndsItAtOnceWithTheStatus) {
  platform::DesktopApplication application(argc_, argv_);
  platform::Quit(7);
  EXPECT_EQ(application.Run(), 7);
}

class Opening : public platform::DesktopApplication {
 public:
  using DesktopApplication::DesktopApplication;
  void Event_Opening() override {
    ++opened;
    throw std::runtime_error("bad start\nsecond line");
  }
  int opened = 0;
};

TEST_F(RunLoop, ExceptionsAreReportedOnOneLineAndTheLoopAndItsTimersGoOn) {
  Opening application(argc_, argv_);
  int ticks = 0, single = 0;
  platform::Timer timer, once;
  timer.Period(5);
  timer.AddActionHandler([&](platform::Timer& fired) {
    EXPECT_EQ(&fired, &timer);
    if (++ticks == 5) platform::Quit(3);
    throw 42;  // not even a std::exception
  });
  timer.RunMode(platform::Timer::Multiple);
  // A single shot fires once in the 25 ms and turns itself off.
  once.Period(1);
  once.AddActionHandler([&](platform::Timer&) { ++single; });
  once.RunMode(platform::Timer::Single);
  testing::internal::CaptureStderr();
  EXPECT_EQ(application.Run(), 3);
  std::string expected = "qem_util: bad start second line\n";
  for (int i = 0; i < 5; ++i) expected += "qem_util: unknown exception\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
  EXPECT_EQ(application.opened, 1);
  EXPECT_EQ(single, 1);
  EXPECT_EQ(once.RunMode(), platform::Timer::Off);
}

}  // namespace
