#include "support/WaitingTasks.h"

#include <utility>

namespace driftmark {

bool WaitingTasks::append(Task task) {
  const std::lock_guard lock(mutex_);
  if (closed_)
    return false;
  tasks_.push_back(std::move(task));
  return tasks_.size() == 1;
}

WaitingTasks::Next WaitingTasks::take() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty())
    return {};
  Next next{std::move(tasks_.front())};
  tasks_.pop_front();
  next.othersWait = !tasks_.empty();
  return next;
}

void WaitingTasks::close() {
  std::deque<Task> dropped;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(tasks_);
  }
  // What the tasks hold may come back here while it goes.
}

} // namespace driftmark
