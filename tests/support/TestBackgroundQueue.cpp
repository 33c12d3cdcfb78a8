#include "support/TestBackgroundQueue.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace driftmark::test {

namespace {

constexpr std::size_t maxTasksInOneCall = 100'000; // far more than any test needs

} // namespace

TestBackgroundQueue::~TestBackgroundQueue() {
  join();
}

void TestBackgroundQueue::setMode(Mode mode) {
  const std::lock_guard lock(mutex_);
  mode_ = mode;
}

void TestBackgroundQueue::refuse(std::optional<PlatformError> error) {
  const std::lock_guard lock(mutex_);
  refusal_ = std::move(error);
}

std::optional<PlatformError> TestBackgroundQueue::async(QualityOfService quality, Task task) {
  const std::lock_guard lock(mutex_);
  qualities_.push_back(quality);
  if (refusal_)
    return refusal_;
  if (mode_ == Mode::wait)
    tasks_.push_back(std::move(task));
  else
    threads_.emplace_back(std::move(task));
  return std::nullopt;
}

bool TestBackgroundQueue::runNext() {
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

std::size_t TestBackgroundQueue::runAll() {
  std::size_t count = 0;
  while (runNext())
    if (++count == maxTasksInOneCall)
      throw std::runtime_error("the background queue has run " + std::to_string(count) +
                               " tasks in one call and more wait: a task is added again and "
                               "again");
  return count;
}

void TestBackgroundQueue::join() {
  std::vector<std::thread> threads;
  {
    const std::lock_guard lock(mutex_);
    threads.swap(threads_);
  }
  for (std::thread& thread : threads)
    thread.join();
}

void TestBackgroundQueue::clear() {
  std::deque<Task> dropped;
  const std::lock_guard lock(mutex_);
  dropped.swap(tasks_);
}

std::size_t TestBackgroundQueue::waiting() const {
  const std::lock_guard lock(mutex_);
  return tasks_.size();
}

std::vector<QualityOfService> TestBackgroundQueue::qualities() const {
  const std::lock_guard lock(mutex_);
  return qualities_;
}

} // namespace driftmark::test
