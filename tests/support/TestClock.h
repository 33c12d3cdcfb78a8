#pragma once

#include "ports/Clock.h"

#include <atomic>
#include <cstdint>
#include <stdexcept>

namespace driftmark::test {

/// A wall clock that moves only under the test's control. To let time pass in a test, use
/// `TestMainQueue::advance`, which moves this clock and runs the tasks that become due. The clock
/// throws when it is read without end and nothing moves it: the reader waits for a moment that
/// never comes.
class TestClock final : public Clock {
public:
  Date now() const override {
    if (++readings_ > maxReadings)
      throw std::runtime_error("the clock is read again and again, but nothing moves it");
    return Date(Date::duration(ticks_.fetch_add(tick_)));
  }

  /// Moves forward by `duration`. Called by the program, which would block its thread.
  void sleep(Seconds duration) override { jump(duration); }

  /// Sets the clock forward or back by `distance`. No waiting task runs.
  void jump(Seconds distance) { move(std::chrono::round<Date::duration>(distance)); }

  /// For `TestMainQueue`.
  void move(Date::duration distance) {
    ticks_ += distance.count();
    if (distance.count() != 0)
      readings_ = 0;
  }

  /// From now on the clock moves forward by `distance` after each reading.
  void tickWhenRead(Date::duration distance) { tick_ = distance.count(); }

  void set(Date date) {
    ticks_ = date.time_since_epoch().count();
    readings_ = 0;
  }

private:
  static constexpr std::uint64_t maxReadings = 10'000'000; // far more than any test needs
  static constexpr Date start = std::chrono::sys_days{std::chrono::year{2025} / 6 / 15};

  mutable std::atomic<std::uint64_t> readings_ = 0; ///< since the clock last moved
  std::atomic<Date::rep> tick_ = 0;
  mutable std::atomic<Date::rep> ticks_ = Date(start).time_since_epoch().count();
};

} // namespace driftmark::test
