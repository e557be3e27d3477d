#include "platform/clock.h"

#include <chrono>
#include <random>
#include <thread>

namespace platform {

double Microseconds() noexcept {
  auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

void SleepCurrent(int milliseconds) noexcept {
  if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

double Rnd() noexcept {
  static std::mt19937_64 generator{std::random_device{}()};
  return std::uniform_real_distribution<double>(0.0, 1.0)(generator);
}

}  // namespace platform
