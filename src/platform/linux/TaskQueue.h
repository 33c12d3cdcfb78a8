#pragma once

#include "platform/MainQueue.h"

#include <deque>
#include <mutex>

#include <QObject>

namespace driftmark {

/// Tasks for the thread that made this object, run from its Qt event loop. However many tasks are
/// handed over, one event wakes the loop, and a task that hands over another lets the rest of the
/// loop have its turn in between. While a task runs an event loop of its own, the other tasks wait.
class TaskQueue final : public QObject {
public:
  using Task = MainQueue::Task;

  TaskQueue() = default;
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;
  ~TaskQueue() override { close(); }

  /// Appends a task. Any thread.
  void post(Task task);

  /// Drops all tasks that wait, and all that come. The thread of this object.
  void close();

  bool event(QEvent* event) override;

private:
  bool append(Task& task);
  void runWaiting();
  bool runNext();
  void wake();

  std::mutex mutex_; ///< guards what follows
  std::deque<Task> tasks_;
  bool eventPosted_ = false; ///< until all tasks of that event have run
  bool closed_ = false;
};

} // namespace driftmark
