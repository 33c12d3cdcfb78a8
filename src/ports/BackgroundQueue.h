#pragma once

#include "ports/PlatformError.h"

#include <functional>
#include <optional>

namespace driftmark {

/// How urgent background work is.
enum class QualityOfService { utility, userInitiated };

/// Threads for work that would block the main thread.
class BackgroundQueue {
public:
  using Task = std::function<void()>;

  virtual ~BackgroundQueue() = default;

  /// Runs `task` on a background thread. Tasks may run at the same time and in any order. The
  /// destructor of the queue waits for running tasks and drops those that still wait. Returns an
  /// error when the system has no thread for the task, which is then dropped. Any thread.
  [[nodiscard]] virtual std::optional<PlatformError> async(QualityOfService quality, Task task) = 0;
};

} // namespace driftmark
