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

/// The queue of the main thread, and the only way onto that thread. Tasks run one at a time and
/// never inside the call that adds them. Only while a task shows a modal window do the tasks behind
/// it run. Destroying the queue drops the tasks that still wait.
class MainQueue {
public:
  using Task = std::function<void()>;

  virtual ~MainQueue() = default;

  /// Runs `task` soon, after all tasks that were added before. Any thread.
  virtual void async(Task task) = 0;

  /// Runs `task` once, no sooner than `delay` from now. Main thread only.
  virtual void after(Seconds delay, Task task) = 0;

  /// Runs `task` every `interval` until the timer is destroyed, which the task itself may do. A run
  /// may be up to `tolerance` late, so that the system can wake up for several timers at once. Main
  /// thread only; the timer is destroyed on the main thread, before the queue.
  virtual std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) = 0;
};

} // namespace driftmark
