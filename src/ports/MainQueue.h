#pragma once

#include "ports/Clock.h"

#include <functional>
#include <memory>

namespace driftmark {

/// A repeating timer; destroying it ends the repetition.
class Timer {
public:
  virtual ~Timer() = default;
};

/// The main thread's queue, and the only way onto that thread. Tasks run one at a time, never
/// inside the call that hands them over; only while a task shows something modal, those behind it
/// run. Tasks still waiting when the queue is destroyed are dropped.
class MainQueue {
public:
  using Task = std::function<void()>;

  virtual ~MainQueue() = default;

  /// Runs `task` soon, after all tasks handed over before. Any thread.
  virtual void async(Task task) = 0;

  /// Runs `task` once, no sooner than `delay` from now. Main thread only.
  virtual void after(Seconds delay, Task task) = 0;

  /// Runs `task` every `interval` until the timer is destroyed, which the task itself may do; a run
  /// may come up to `tolerance` late, so that the system can wake up for several timers at once.
  /// Main thread only; the timer is destroyed on the main thread, before the queue.
  virtual std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) = 0;
};

} // namespace driftmark
