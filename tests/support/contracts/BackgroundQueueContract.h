#pragma once

#include "ports/BackgroundQueue.h"
#include "support/contracts/SubjectFactory.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A background queue under test.
class BackgroundQueueSubject {
public:
  virtual ~BackgroundQueueSubject() = default;

  virtual BackgroundQueue& queue() = 0;

  /// Waits until `done` returns true, because of other threads; false after a long timeout.
  virtual bool waitUntil(const std::function<bool()>& done) = 0;

  /// Destroys the queue.
  virtual void destroy() = 0;
};

class BackgroundQueueContract
    : public testing::TestWithParam<SubjectFactory<BackgroundQueueSubject>> {
protected:
  /// Adds a task, which the queue must accept.
  void async(QualityOfService quality, BackgroundQueue::Task task);
  bool waitUntil(const std::function<bool()>& done) { return subject_->waitUntil(done); }

  std::unique_ptr<BackgroundQueueSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
