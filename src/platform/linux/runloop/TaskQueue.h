#pragma once

#include "platform/posix/children/Wakeup.h"
#include "ports/MainQueue.h"

#include <cstddef>
#include <deque>
#include <mutex>

#include <QSocketNotifier>

namespace driftmark {

/// Tasks for the thread that made this object, run from its Qt event loop. However many tasks are
/// handed over, they wake the loop once, and a task that hands over another lets the rest of the
/// loop have its turn in between. An event loop that a task runs goes on with the tasks behind it.
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
  std::size_t waiting();
  void runNext();
  void rest();

  Wakeup wakeup_;
  QSocketNotifier notifier_;

  unsigned turns_ = 0; ///< how often tasks were begun to run; the thread of this object

  std::mutex mutex_; ///< guards what follows
  std::deque<Task> tasks_;
  bool awake_ = false; ///< whether the event loop is woken up, as it is while a task waits
  bool closed_ = false;
};

} // namespace driftmark
