#pragma once

#include "ports/Environment.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// An environment under test.
class EnvironmentSubject {
public:
  virtual ~EnvironmentSubject() = default;

  virtual Environment& environment() = 0;
  virtual void set(const std::string& name, const std::string& value) = 0;
  virtual void unset(const std::string& name) = 0;
};

class EnvironmentContract : public testing::TestWithParam<SubjectFactory<EnvironmentSubject>> {
protected:
  Environment& environment() { return subject_->environment(); }

  std::unique_ptr<EnvironmentSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
