// Which tasks a turn of the event loop runs, and when the loop is woken up.

#include "support/WaitingTasks.h"

#include <utility>

namespace driftmark {

WaitingTasks::WaitingTasks(std::function<void()> wake, std::function<void()> cancelWake)
    : wake_(std::move(wake)), cancelWake_(std::move(cancelWake)) {}

void WaitingTasks::append(Task task) {
  const std::lock_guard lock(mutex_);
  if (closed_)
    return;
  tasks_.push_back(std::move(task));
  if (!std::exchange(awake_, true))
    wake_();
}

void WaitingTasks::close() {
  std::deque<Task> dropped;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(tasks_);
  }
  // Destroying what the tasks hold may use this object.
}

/// Returns how many tasks wait.
std::size_t WaitingTasks::answerWakeup() {
  const std::lock_guard lock(mutex_);
  awake_ = false;
  return tasks_.size();
}

/// Takes the first task out. The loop is woken up for those behind it, as it may run inside it.
WaitingTasks::Task WaitingTasks::take() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty())
    return {};
  Task task = std::move(tasks_.front());
  tasks_.pop_front();
  if (!tasks_.empty() && !awake_) {
    awake_ = true;
    wake_();
  } else if (tasks_.empty() && awake_ && cancelWake_) {
    awake_ = false;
    cancelWake_();
  }
  return task;
}

WaitingTasks::Turn::Turn(WaitingTasks& tasks)
    : tasks_(tasks), number_(++tasks.turns_), remaining_(tasks.answerWakeup()) {}

WaitingTasks::Task WaitingTasks::Turn::next() {
  if (remaining_ == 0 || number_ != tasks_.turns_)
    return {};
  --remaining_;
  return tasks_.take();
}

} // namespace driftmark
