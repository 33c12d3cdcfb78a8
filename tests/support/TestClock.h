#pragma once

#include "ports/Clock.h"

#include <atomic>

namespace driftmark::test {

/// A clock that moves only when told.
class TestClock final : public Clock {
public:
  Date now() const override { return Date(Date::duration(ticks_.fetch_add(tick_))); }

  /// Moves on by `duration`.
  void sleep(Seconds duration) override { jump(duration); }

  /// Moves on (or back) without running anything that waits in the queue: the wall clock was set.
  void jump(Seconds distance) { move(std::chrono::round<Date::duration>(distance)); }

  void move(Date::duration distance) { ticks_ += distance.count(); }

  /// From now on the clock moves on by `distance` after each look at it.
  void tickWhenRead(Date::duration distance) { tick_ = distance.count(); }

  void set(Date date) { ticks_ = date.time_since_epoch().count(); }

private:
  static constexpr Date start = std::chrono::sys_days{std::chrono::year{2025} / 6 / 15};

  std::atomic<Date::rep> tick_ = 0;
  mutable std::atomic<Date::rep> ticks_ = Date(start).time_since_epoch().count();
};

} // namespace driftmark::test
