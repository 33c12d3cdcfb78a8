#pragma once

#include <functional>

namespace driftmark {

/// How urgent background work is.
enum class QualityOfService { utility, userInitiated };

/// Threads for work that would block the main thread.
class BackgroundQueue {
public:
  using Task = std::function<void()>;

  virtual ~BackgroundQueue() = default;

  /// Runs `task` on a background thread. Tasks may run at the same time and in any order. The
  /// destructor of the queue waits for running tasks and drops those that still wait. Any thread.
  virtual void async(QualityOfService quality, Task task) = 0;
};

} // namespace driftmark
