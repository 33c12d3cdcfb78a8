#include "platform/linux/TaskQueue.h"

#include <cstddef>
#include <utility>

#include <QObject>

namespace driftmark {

TaskQueue::TaskQueue() : notifier_(wakeup_.descriptor(), QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] {
    wakeup_.clear();
    runWaiting();
  });
}

void TaskQueue::post(Task task) {
  if (append(task))
    wakeup_.wake();
}

/// Whether the event loop has to be woken up.
bool TaskQueue::append(Task& task) {
  const std::lock_guard lock(mutex_);
  if (closed_)
    return false;
  tasks_.push_back(std::move(task));
  return !std::exchange(awake_, true);
}

void TaskQueue::close() {
  std::deque<Task> dropped;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(tasks_);
  }
  // What the tasks hold may use this queue while it goes.
}

/// Runs the tasks that wait now; what they hand over is left to the next wake-up.
void TaskQueue::runWaiting() {
  std::size_t count = 0;
  {
    const std::lock_guard lock(mutex_);
    count = tasks_.size();
  }
  while (count-- > 0 && runNext()) {
  }

  {
    const std::lock_guard lock(mutex_);
    awake_ = !tasks_.empty();
    if (!awake_)
      return;
  }
  wakeup_.wake();
}

bool TaskQueue::runNext() {
  Task task;
  {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty())
      return false;
    task = std::move(tasks_.front());
    tasks_.pop_front();
  }
  task();
  return true;
}

} // namespace driftmark
