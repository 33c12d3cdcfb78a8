#pragma once

#include "ports/Application.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// The application under test, which does not run.
class ApplicationSubject {
public:
  virtual ~ApplicationSubject() = default;

  virtual Application& application() = 0;
};

class ApplicationContract : public testing::TestWithParam<SubjectFactory<ApplicationSubject>> {
protected:
  Application& application() { return subject_->application(); }

  std::unique_ptr<ApplicationSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
