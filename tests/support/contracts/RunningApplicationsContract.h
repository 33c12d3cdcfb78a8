#pragma once

#include "ports/RunningApplications.h"
#include "support/contracts/SubjectFactory.h"

#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// The running applications under test.
class RunningApplicationsSubject {
public:
  virtual ~RunningApplicationsSubject() = default;

  virtual RunningApplications& applications() = 0;

  /// Starts a process of this user that runs until `end`. Returns its identifier.
  virtual std::int32_t start() = 0;

  /// Ends a process that `start` started. Returns when it does not exist any more.
  virtual void end(std::int32_t process) = 0;

  /// The identifier of the process that began before all that `start` starts.
  virtual std::int32_t oldest() = 0;
};

class RunningApplicationsContract
    : public testing::TestWithParam<SubjectFactory<RunningApplicationsSubject>> {
protected:
  RunningApplications& applications() { return subject_->applications(); }

  std::unique_ptr<RunningApplicationsSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
