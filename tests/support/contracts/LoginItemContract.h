#pragma once

#include "ports/LoginItem.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// The login item of a program that was never registered.
class LoginItemSubject {
public:
  virtual ~LoginItemSubject() = default;

  virtual LoginItem& loginItem() = 0;
};

class LoginItemContract : public testing::TestWithParam<SubjectFactory<LoginItemSubject>> {
protected:
  std::unique_ptr<LoginItemSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
