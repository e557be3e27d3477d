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
    opened = true;
    throw std::runtime_error("bad start\nsecond line");
  }
  bool opened = false;
};

TEST_F(RunLoop, OpeningRunsOnceAndAnExceptionThereDoesNotStopTheLoop) {
  Opening application(argc_, argv_);
  int ticks = 0;
  platform::Timer timer;
  timer.Period(5);
  timer.AddActionHandler([&](platform::Timer&) {
    if (++ticks == 3) platform::Quit(0);
  });
  timer.RunMode(platform::Timer::Multiple);
  testing::internal::CaptureStderr();
  EXPECT_EQ(application.Run(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "qem_util: bad start second line\n");
  EXPECT_TRUE(application.opened);
  EXPECT_EQ(ticks, 3);
}

TEST_F(RunLoop, TimerExceptionsAreReportedAndTheTimerGoesOn) {
  platform::DesktopApplication application(argc_, argv_);
  int ticks = 0;
  platform::Timer timer;
  timer.Period(1);
  timer.AddActionHandler([&](platform::Timer& fired) {
    EXPECT_EQ(&fired, &timer);
    if (++ticks == 2) platform::Quit(3);
    throw 42;  // not even a std::exception
  });
  timer.RunMode(platform::Timer::Multiple);
  testing::internal::CaptureStderr();
  EXPECT_EQ(application.Run(), 3);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "qem_util: unknown exception\nqem_util: unknown exception\n");
}

TEST_F(RunLoop, SingleShotTimerFiresOnceAndTurnsItselfOff) {
  platform::DesktopApplication application(argc_, argv_);
  int single = 0;
  platform::Timer once, stopper;
  once.Period(1);
  once.AddActionHandler([&](platform::Timer&) { ++single; });
  once.RunMode(platform::Timer::Single);
  stopper.Period(60);
  stopper.AddActionHandler([](platform::Timer&) { platform::Quit(0); });
  stopper.RunMode(platform::Timer::Single);
  EXPECT_EQ(application.Run(), 0);
  EXPECT_EQ(single, 1);
  EXPECT_EQ(once.RunMode(), platform::Timer::Off);
}

}  // namespace
