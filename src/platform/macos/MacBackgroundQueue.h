#pragma once

#include "ports/BackgroundQueue.h"

#include <atomic>

#include <dispatch/dispatch.h>

namespace driftmark {

/// Background work on the system's global queues. The destructor waits for running tasks and drops
/// those that have not begun.
class MacBackgroundQueue final : public BackgroundQueue {
public:
  ~MacBackgroundQueue() override;

  void async(QualityOfService quality, Task task) override;

private:
  const dispatch_group_t tasks_ = dispatch_group_create(); ///< running or waiting
  std::atomic<bool> closing_ = false;
};

} // namespace driftmark
