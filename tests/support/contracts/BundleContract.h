#pragma once

#include "ports/Bundle.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A bundle under test: the version 1.2 of the application com.example.program.
class BundleSubject {
public:
  virtual ~BundleSubject() = default;

  virtual Bundle& bundle() = 0;
};

class BundleContract : public testing::TestWithParam<SubjectFactory<BundleSubject>> {
protected:
  Bundle& bundle() { return subject_->bundle(); }

  std::unique_ptr<BundleSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
