#pragma once

#include "ports/MainQueue.h"
#include "support/TestClock.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace driftmark::test {

/// A main queue on virtual time. Tasks run only inside `runAll`, `advance` and `advanceToNext`, in
/// the order of their due times, and in the order of adding where those are equal. The clock moves
/// with the time of the queue. A call that would run tasks without end throws.
class TestMainQueue final : public MainQueue {
public:
  /// The settings of a timer.
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

  /// Called at the end of each `async`, on its thread.
  void onAsync(std::function<void()> handler) { onAsync_ = std::move(handler); }

  /// Runs all tasks that are due now, and those that they add for now. Returns how many ran.
  std::size_t runAll();

  /// Lets `distance` pass and runs each task that becomes due at its due time. Returns how many
  /// ran.
  std::size_t advance(Seconds distance);

  /// Lets time pass until the next task is due and runs the tasks due then; false when none waits.
  bool advanceToNext();

  /// Calls `inside` from a task that shows a modal window: the call may run this queue.
  void runModal(const std::function<void()>& inside);

  /// Drops all waiting tasks.
  void clear();

  /// The remaining delays of all waiting one-shot tasks, earliest first.
  std::vector<Seconds> waiting() const;

  /// The settings of all timers that exist, oldest first.
  std::vector<TimerSettings> timers() const;

private:
  struct Core;
  class RunningTimer;

  std::size_t runUpTo(Date::duration target);

  TestClock& clock_;
  std::function<void()> onAsync_;
  std::shared_ptr<Core> core_;
};

} // namespace driftmark::test
