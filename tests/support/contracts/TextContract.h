#pragma once

#include "ports/Text.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// The system's texts under test.
class TextSubject {
public:
  virtual ~TextSubject() = default;

  virtual Text& text() = 0;
};

class TextContract : public testing::TestWithParam<SubjectFactory<TextSubject>> {
protected:
  Text& text() { return subject_->text(); }

  std::unique_ptr<TextSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
