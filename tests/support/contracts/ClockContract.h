#pragma once

#include "ports/Clock.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A clock under test.
class ClockSubject {
public:
  virtual ~ClockSubject() = default;

  virtual Clock& clock() = 0;

  /// Returns once at least `duration` has passed.
  virtual void pass(Seconds duration) = 0;
};

class ClockContract : public testing::TestWithParam<SubjectFactory<ClockSubject>> {
protected:
  Clock& clock() { return subject_->clock(); }

  std::unique_ptr<ClockSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
