#include "platform/clock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Processes forked from one parent must not retry in step: each child draws its own number.
TEST(Rnd, ForkedChildrenDrawTheirOwnNumbers) {
  platform::Rnd();  // the parent's generator is seeded before the forks
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  for (int child = 0; child < 2; ++child) {
    if (::fork() == 0) {
      const double drawn = platform::Rnd();
      ::_exit(::write(ends[1], &drawn, sizeof drawn) == sizeof drawn ? 0 : 1);
    }
    ::wait(nullptr);
  }
  ::close(ends[1]);
  double drawn[2] = {};
  EXPECT_EQ(::read(ends[0], drawn, sizeof drawn), static_cast<ssize_t>(sizeof drawn));
  ::close(ends[0]);
  EXPECT_NE(drawn[0], drawn[1]) << "two children drew the same number";
  EXPECT_NE(drawn[0], platform::Rnd()) << "a child drew what its parent draws next";
}

}  // namespace
