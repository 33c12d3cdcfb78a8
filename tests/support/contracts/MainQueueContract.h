#pragma once

#include "ports/MainQueue.h"
#include "support/contracts/SubjectFactory.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A main queue under test, on the thread that made the subject.
class MainQueueSubject {
public:
  virtual ~MainQueueSubject() = default;

  virtual MainQueue& queue() = 0;

  /// Runs the queue until `done`; false after a long timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;

  /// The time of the queue, which never goes back.
  virtual Seconds elapsed() const = 0;

  /// Destroys the queue.
  virtual void destroy() = 0;
};

class MainQueueContract : public testing::TestWithParam<SubjectFactory<MainQueueSubject>> {
protected:
  MainQueue& queue() { return subject_->queue(); }
  bool runUntil(const std::function<bool()>& done) { return subject_->runUntil(done); }

  /// Lets at least `duration` pass while the queue runs.
  bool pass(Seconds duration);

  std::unique_ptr<MainQueueSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
