#include "platform/run_loop.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

// An exception in an event is said on one line and ends neither the loop nor its timers; Quit's
// status is what Run gives.
TEST(RunLoop, ExceptionsAreReportedOnOneLineAndTheLoopAndItsTimersGoOn) {
  int argc = 1;
  char name[] = "test";
  char* argv[] = {name, nullptr};
  platform::DesktopApplication application(argc, argv);
  int ticks = 0, single = 0;
  platform::Timer timer, once;
  timer.Period(5);
  timer.AddActionHandler([&](platform::Timer&) {
    if (++ticks == 1) throw std::runtime_error("bad tick\nsecond line");
    if (ticks == 5) platform::Quit(3);
    throw 42;  // not even a std::exception
  });
  timer.RunMode(platform::Timer::Multiple);
  // A single shot fires once in the 25 ms and turns itself off.
  once.Period(1);
  once.AddActionHandler([&](platform::Timer&) { ++single; });
  once.RunMode(platform::Timer::Single);
  testing::internal::CaptureStderr();
  EXPECT_EQ(application.Run(), 3);
  std::string expected = "qem_util: bad tick second line\n";
  for (int i = 0; i < 4; ++i) expected += "qem_util: unknown exception\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
  EXPECT_EQ(single, 1);
  EXPECT_EQ(once.RunMode(), platform::Timer::Off);
}

}  // namespace
