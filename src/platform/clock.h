#pragma once
// Clock, sleep and random numbers for the waits between lock attempts.

namespace platform {

// A monotonic count of microseconds (steady clock), as a double.
double Microseconds() noexcept;

// Suspends the calling thread for `milliseconds`. It is a plain sleep: it runs no events, so a
// wait never re-enters the event loop.
void SleepCurrent(int milliseconds) noexcept;

// A random double from 0 up to, not including, 1, from the process's one generator. It is seeded
// from the system's entropy source at first use, and again in a child after fork, so that no two
// processes draw the same waits and retry in step.
double Rnd() noexcept;

}  // namespace platform
