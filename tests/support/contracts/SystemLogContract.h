#pragma once

#include "ports/SystemLog.h"
#include "support/contracts/SubjectFactory.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A system log under test, with a reader of what it wrote.
class SystemLogSubject {
public:
  virtual ~SystemLogSubject() = default;

  virtual SystemLog& systemLog() = 0;

  /// The first `count` lines written so far, without their line ends; fewer after a long timeout.
  virtual std::vector<std::string> lines(std::size_t count) = 0;
};

class SystemLogContract : public testing::TestWithParam<SubjectFactory<SystemLogSubject>> {
protected:
  SystemLog& systemLog() { return subject_->systemLog(); }

  std::unique_ptr<SystemLogSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
