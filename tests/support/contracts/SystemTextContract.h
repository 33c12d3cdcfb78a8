#pragma once

#include "ports/SystemText.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// The system's texts under test.
class SystemTextSubject {
public:
  virtual ~SystemTextSubject() = default;

  virtual SystemText& text() = 0;
};

class SystemTextContract : public testing::TestWithParam<SubjectFactory<SystemTextSubject>> {
protected:
  SystemText& text() { return subject_->text(); }

  std::unique_ptr<SystemTextSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
