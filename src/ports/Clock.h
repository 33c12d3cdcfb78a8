#pragma once

#include <chrono>

namespace driftmark {

/// Durations are seconds, fractions included.
using Seconds = std::chrono::duration<double>;

/// A wall-clock moment. Moments compare and subtract exactly in the clock's own ticks.
using Date = std::chrono::system_clock::time_point;

/// Earlier than every real moment. Only for comparisons: subtracting from it overflows.
inline constexpr Date distantPast = Date::min();

/// The moment `delay` after `date`, rounded to the clock's tick.
inline Date later(Date date, Seconds delay) {
  return date + std::chrono::round<Date::duration>(delay);
}

/// The moment `distance` before `date`, rounded to the clock's tick.
inline Date earlier(Date date, Seconds distance) {
  return date - std::chrono::round<Date::duration>(distance);
}

/// The wall clock.
class Clock {
public:
  virtual ~Clock() = default;

  /// The current moment. Any thread.
  virtual Date now() const = 0;

  /// Blocks the calling thread for `duration`.
  virtual void sleep(Seconds duration) = 0;
};

} // namespace driftmark
