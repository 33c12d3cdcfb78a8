#pragma once

#include "ports/MainQueue.h"

#include <deque>
#include <mutex>

namespace driftmark {

/// The tasks that a main queue has taken and not yet run, in their order. Whoever runs them has to
/// be woken up once for the first and knows of the others from then on. Any thread.
class WaitingTasks {
public:
  using Task = MainQueue::Task;

  struct Next {
    Task task;               ///< empty when none waits
    bool othersWait = false; ///< behind it
  };

  /// Appends a task. Whether the runner has to be woken up for it.
  bool append(Task task);

  /// Takes the first task out.
  Next take();

  /// Drops all tasks, and all that come.
  void close();

private:
  std::mutex mutex_; ///< guards what follows
  std::deque<Task> tasks_;
  bool closed_ = false;
};

} // namespace driftmark
