#include "platform/linux/runloop/TaskQueue.h"

#include <cstddef>
#include <utility>

#include <QObject>

namespace driftmark {

TaskQueue::TaskQueue() : notifier_(wakeup_.descriptor(), QSocketNotifier::Read) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { runWaiting(); });
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

/// Runs the tasks that wait now, unless an event loop inside one of them has gone on with them;
/// what they hand over is left to the next turn of the loop, which stays awake for it.
void TaskQueue::runWaiting() {
  const unsigned turn = ++turns_;
  std::size_t count = waiting();
  while (count-- > 0 && turn == turns_)
    runNext();
}

/// How many tasks wait. Without any, the event loop may sleep.
std::size_t TaskQueue::waiting() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty())
    rest();
  return tasks_.size();
}

void TaskQueue::runNext() {
  Task task;
  {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty())
      return;
    task = std::move(tasks_.front());
    tasks_.pop_front();
    if (tasks_.empty())
      rest();
  }
  task();
}

void TaskQueue::rest() {
  wakeup_.clear();
  awake_ = false;
}

} // namespace driftmark
