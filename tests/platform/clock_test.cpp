#include "platform/clock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

namespace {

using Draws = std::array<double, 4>;

Draws Draw() {
  Draws draws;
  for (double& d : draws) d = platform::Rnd();
  return draws;
}

// A child draws after fork and hands its numbers back through a pipe.
Draws DrawInChild() {
  int ends[2];
  if (::pipe(ends) != 0) return {};
  if (::fork() == 0) {
    Draws draws = Draw();
    ::_exit(::write(ends[1], &draws, sizeof draws) == sizeof draws ? 0 : 1);
  }
  ::close(ends[1]);
  Draws draws{};
  EXPECT_EQ(::read(ends[0], &draws, sizeof draws), static_cast<ssize_t>(sizeof draws));
  ::close(ends[0]);
  ::wait(nullptr);
  return draws;
}

// Processes forked from one parent must not retry in step.
TEST(Rnd, ForkedChildrenDrawTheirOwnNumbers) {
  platform::Rnd();  // the parent's generator is seeded before the forks
  Draws first = DrawInChild(), second = DrawInChild();
  EXPECT_NE(first, second) << "two children drew the same numbers";
  EXPECT_NE(first, Draw()) << "a child drew what its parent draws next";
}

}  // namespace
