#pragma once

#include "ports/MainQueue.h"
#include "support/TestClock.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace driftmark::test {

/// A main queue on virtual time. Nothing runs but inside `runAll`, `advance` and `advanceToNext`;
/// what is due runs in the order of its due times, and in the order of handing over where those are
/// equal. Moving the queue's time moves the clock. A call that would run tasks without end throws.
class TestMainQueue final : public MainQueue {
public:
  /// What a timer was made with.
  struct TimerSettings {
    Seconds interval;
    Seconds tolerance;
    bool operator==(const TimerSettings&) const = default;
  };

  explicit TestMainQueue(TestClock& clock);
  TestMainQueue(const TestMainQueue&) = delete;
  TestMainQueue& operator=(const TestMainQueue&) = delete;
  ~TestMainQueue() override;

  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;

  /// Runs everything that is due now, and what that hands over for now. Returns how many tasks ran.
  std::size_t runAll();

  /// Moves time on by `distance`, running what becomes due at its due time. Returns how many ran.
  std::size_t advance(Seconds distance);

  /// Moves time to the next due time and runs what is due then; false when nothing waits.
  bool advanceToNext();

  /// Drops everything that waits.
  void clear();

  /// The remaining delays of all waiting one-shot tasks, earliest first.
  std::vector<Seconds> waiting() const;

  /// The settings of all living timers, oldest first.
  std::vector<TimerSettings> timers() const;

private:
  struct Core;
  class RunningTimer;

  std::size_t runUpTo(Date::duration target);

  TestClock& clock_;
  std::shared_ptr<Core> core_;
};

} // namespace driftmark::test
