#include "platform/clock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <vector>

namespace {

using Draws = std::array<double, 4>;

Draws Draw() {
  Draws draws;
  for (double& d : draws) d = platform::Rnd();
  return draws;
}

// Processes forked from one parent must not retry in step: each child draws its own numbers,
// different from its sibling's and from what the parent draws next.
TEST(Rnd, ForkedChildrenDrawTheirOwnNumbers) {
  platform::Rnd();  // the parent's generator is seeded before the forks
  std::vector<Draws> seen;
  for (int child = 0; child < 2; ++child) {
    int pipe_ends[2];
    ASSERT_EQ(::pipe(pipe_ends), 0);
    pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      Draws draws = Draw();
      ssize_t written = ::write(pipe_ends[1], draws.data(), sizeof draws);
      ::_exit(written == static_cast<ssize_t>(sizeof draws) ? 0 : 1);
    }
    ::close(pipe_ends[1]);
    Draws draws{};
    EXPECT_EQ(::read(pipe_ends[0], draws.data(), sizeof draws), static_cast<ssize_t>(sizeof draws));
    ::close(pipe_ends[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    EXPECT_EQ(status, 0);
    seen.push_back(draws);
  }
  seen.push_back(Draw());
  EXPECT_NE(seen[0], seen[1]) << "two children drew the same numbers";
  EXPECT_NE(seen[0], seen[2]) << "a child drew what its parent draws next";
}

}  // namespace
