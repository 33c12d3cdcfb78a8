// Which thread runs which task, and when a thread is started.

#include "platform/linux/runloop/LinuxBackgroundQueue.h"

#include "platform/posix/Threads.h"

#include <system_error>
#include <utility>

namespace driftmark {

namespace {

/// Independent of the number of processors, as tasks mostly wait for tools to end.
constexpr std::size_t maxThreads = 16;

} // namespace

LinuxBackgroundQueue::~LinuxBackgroundQueue() {
  std::deque<Task> dropped;
  std::deque<Task> alsoDropped;
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    dropped.swap(userInitiated_);
    alsoDropped.swap(utility_);
  }
  changed_.notify_all();
  for (std::thread& thread : threads_)
    thread.join();
}

std::optional<PlatformError> LinuxBackgroundQueue::async(QualityOfService quality, Task task) {
  const std::lock_guard lock(mutex_);
  if (closing_)
    return std::nullopt;
  if (auto error = ensureThread())
    return error;
  auto& tasks = quality == QualityOfService::userInitiated ? userInitiated_ : utility_;
  tasks.push_back(std::move(task));
  changed_.notify_one();
  return std::nullopt;
}

/// Starts a thread for one more task unless a thread is idle. Without a new one, the task waits for
/// the others.
std::optional<PlatformError> LinuxBackgroundQueue::ensureThread() {
  if (waiting() < idleThreads_ || threads_.size() == maxThreads)
    return std::nullopt;
  const SignalsBlocked guard;
  try {
    threads_.emplace_back([this] { runTasks(); });
  } catch (const std::system_error& error) {
    if (threads_.empty())
      return PlatformError{error.code().message()};
  }
  return std::nullopt;
}

void LinuxBackgroundQueue::runTasks() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idleThreads_;
    changed_.wait(lock, [this] { return closing_ || waiting() > 0; });
    --idleThreads_;
    if (closing_)
      return;
    Task task = takeMostUrgent();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

LinuxBackgroundQueue::Task LinuxBackgroundQueue::takeMostUrgent() {
  auto& tasks = userInitiated_.empty() ? utility_ : userInitiated_;
  Task task = std::move(tasks.front());
  tasks.pop_front();
  return task;
}

} // namespace driftmark
