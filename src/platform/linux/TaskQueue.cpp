#include "platform/linux/TaskQueue.h"

#include <cstddef>
#include <utility>

#include <QCoreApplication>
#include <QEvent>

namespace driftmark {

void TaskQueue::post(Task task) {
  if (append(task))
    wake();
}

/// Whether the event loop has to be woken up.
bool TaskQueue::append(Task& task) {
  const std::lock_guard lock(mutex_);
  if (closed_)
    return false;
  tasks_.push_back(std::move(task));
  return !std::exchange(eventPosted_, true);
}

void TaskQueue::wake() {
  QCoreApplication::postEvent(this, new QEvent(QEvent::User));
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

bool TaskQueue::event(QEvent* event) {
  if (event->type() != QEvent::User)
    return QObject::event(event);
  runWaiting();
  return true;
}

/// Runs the tasks that wait now; what they hand over is left to the next event.
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
    eventPosted_ = !tasks_.empty();
    if (!eventPosted_)
      return;
  }
  wake();
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
