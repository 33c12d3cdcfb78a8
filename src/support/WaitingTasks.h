#pragma once

#include "ports/MainQueue.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace driftmark {

/// The tasks that a main queue has accepted and not yet run, in order. The event loop runs them in
/// turns: a turn runs the tasks that waited when it began. What they append waits for the next
/// turn, so that the other events of the loop are handled in between. An event loop inside a task
/// continues with the tasks behind it, in turns of its own; the outer turn then ends with its task.
/// The loop stays woken up as long as a task waits.
class WaitingTasks {
public:
  using Task = MainQueue::Task;

  /// `wake` makes the event loop start a turn soon; it is not called again before that turn starts.
  /// `cancelWake` takes such a wake-up back, as no task waits any more. Without it the loop starts
  /// an empty turn. `wake` is called on any thread, `cancelWake` on that of the loop, never both at
  /// once; they must not use this object.
  explicit WaitingTasks(std::function<void()> wake, std::function<void()> cancelWake = nullptr);

  /// Appends a task. Any thread.
  void append(Task task);

  /// Drops all waiting tasks, and all that are appended later. Any thread.
  void close();

  /// One turn of the event loop, on its thread. It ends before the tasks do.
  class Turn {
  public:
    explicit Turn(WaitingTasks& tasks);

    /// The next task to run; empty when the turn is over.
    Task next();

  private:
    WaitingTasks& tasks_;
    const unsigned number_;
    std::size_t remaining_ = 0;
  };

private:
  std::size_t answerWakeup();
  Task take();

  const std::function<void()> wake_;
  const std::function<void()> cancelWake_;
  unsigned turns_ = 0; ///< how many were started; the event loop's thread only

  std::mutex mutex_; ///< guards what follows
  std::deque<Task> tasks_;
  bool awake_ = false; ///< whether a turn is going to start
  bool closed_ = false;
};

} // namespace driftmark
