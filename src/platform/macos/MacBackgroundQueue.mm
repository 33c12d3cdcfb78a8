// How background tasks run, and which are dropped at the end.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"

#include <memory>
#include <utility>

namespace driftmark {

MacBackgroundQueue::~MacBackgroundQueue() {
  closing_ = true;
  dispatch_group_wait(tasks_, DISPATCH_TIME_FOREVER);
}

/// The task is released when it has run or was dropped, not when the system releases the block.
std::optional<PlatformError> MacBackgroundQueue::async(QualityOfService quality, Task task) {
  const bool isUrgent = quality == QualityOfService::userInitiated;
  const auto queue =
      dispatch_get_global_queue(isUrgent ? QOS_CLASS_USER_INITIATED : QOS_CLASS_UTILITY, 0);
  const auto waiting = std::make_shared<Task>(std::move(task));
  dispatch_group_async(tasks_, queue, ^{
    @autoreleasepool {
      const Task next = std::exchange(*waiting, nullptr);
      if (!closing_)
        noThrow(next);
    }
  });
  return std::nullopt;
}

} // namespace driftmark
