#pragma once

#include "ports/BackgroundQueue.h"

#include <atomic>

#include <dispatch/dispatch.h>

namespace driftmark {

/// Background work on the system's global queues. Tasks handed over while this queue is being
/// destroyed are dropped.
class MacBackgroundQueue final : public BackgroundQueue {
public:
  ~MacBackgroundQueue() override;

  void async(QualityOfService quality, Task task) override;

private:
  const dispatch_group_t tasks_ = dispatch_group_create(); ///< those that run or wait
  std::atomic<bool> closing_ = false;
};

} // namespace driftmark
