#pragma once
// A seam in the lock attempt for tests that must interleave parties exactly: this test binary
// defines flock(2) itself, so every lock attempt made by the code under test passes through it.
// It counts the calls and can run one hook just before the real lock is asked for.

#include <functional>

namespace qem_test {

// Runs `hook` once, inside the next flock call, before the real one; the hook is cleared before
// it runs, so locks it takes itself go straight through.
void BeforeNextFlock(std::function<void()> hook);
// The number of flock calls so far, and the result of the last real one.
int FlockCalls();
int LastFlockResult();

}  // namespace qem_test
