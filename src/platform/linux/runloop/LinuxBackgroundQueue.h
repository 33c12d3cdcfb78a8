#pragma once

#include "ports/BackgroundQueue.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace driftmark {

/// Background work on at most 16 threads, which are started when needed and kept. Waiting
/// user-initiated tasks run before waiting utility tasks. Tasks that are added while the queue is
/// being destroyed are dropped.
class LinuxBackgroundQueue final : public BackgroundQueue {
public:
  LinuxBackgroundQueue() = default;
  LinuxBackgroundQueue(const LinuxBackgroundQueue&) = delete;
  LinuxBackgroundQueue& operator=(const LinuxBackgroundQueue&) = delete;
  ~LinuxBackgroundQueue() override;

  /// Fails when not even one thread can be started. The next task tries again.
  [[nodiscard]] std::optional<PlatformError> async(QualityOfService quality, Task task) override;

private:
  std::optional<PlatformError> ensureThread();
  void runTasks();
  Task takeMostUrgent();
  std::size_t waiting() const { return userInitiated_.size() + utility_.size(); }

  std::mutex mutex_; ///< guards what follows
  std::condition_variable changed_;
  std::deque<Task> userInitiated_;
  std::deque<Task> utility_;
  std::vector<std::thread> threads_;
  std::size_t idleThreads_ = 0;
  bool closing_ = false;
};

} // namespace driftmark
