#include "platform/clock.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

namespace platform {

namespace {

// Set in a child right after fork: its generator is a copy of the parent's and must be seeded
// anew before the next draw. Setting a flag is all that is safe to do inside fork.
bool forked = false;

void MarkForked() {
  forked = true;
}

// A generator seeded from the system's entropy source; the process id and the clock are mixed in
// as well, so that even a source that repeats itself gives every process its own sequence.
std::mt19937_64 Seeded() {
  std::seed_seq::result_type words[6] = {
      static_cast<std::seed_seq::result_type>(::getpid()),
      static_cast<std::seed_seq::result_type>(
          std::chrono::steady_clock::now().time_since_epoch().count()),
  };
  try {
    std::random_device device;
    for (int i = 2; i < 6; ++i) words[i] = device();
  } catch (const std::exception&) {
    // No entropy source: the process id and the clock still set processes apart.
  }
  std::seed_seq seeds(std::begin(words), std::end(words));
  return std::mt19937_64(seeds);
}

// The process's one generator, seeded at first use.
struct Source {
  Source() : generator(Seeded()) { ::pthread_atfork(nullptr, nullptr, &MarkForked); }
  std::mt19937_64 generator;
};

}  // namespace

double Microseconds() noexcept {
  auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

void SleepCurrent(int milliseconds) noexcept {
  if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

double Rnd() noexcept {
  static Source source;
  if (forked) {
    forked = false;
    source.generator = Seeded();
  }
  return std::uniform_real_distribution<double>(0.0, 1.0)(source.generator);
}

}  // namespace platform
