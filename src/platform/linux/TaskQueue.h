#pragma once

#include "platform/MainQueue.h"
#include "platform/posix/Wakeup.h"

#include <deque>
#include <mutex>

#include <QSocketNotifier>

namespace driftmark {

/// Tasks for the thread that made this object, run from its Qt event loop. However many tasks are
/// handed over, they wake the loop once, and a task that hands over another lets the rest of the
/// loop have its turn in between. While a task runs an event loop of its own, the other tasks wait.
class TaskQueue final {
public:
  using Task = MainQueue::Task;

  /// Throws std::system_error when the system has no descriptors left.
  TaskQueue();
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;
  ~TaskQueue() { close(); }

  /// Appends a task. Any thread.
  void post(Task task);

  /// Drops all tasks that wait, and all that come. The thread of this object.
  void close();

private:
  bool append(Task& task);
  void runWaiting();
  bool runNext();

  Wakeup wakeup_;
  QSocketNotifier notifier_;

  std::mutex mutex_; ///< guards what follows
  std::deque<Task> tasks_;
  bool awake_ = false; ///< from the wake-up until its tasks have run
  bool closed_ = false;
};

} // namespace driftmark
