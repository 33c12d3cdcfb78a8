#pragma once

#include "ports/UserDefaults.h"
#include "support/contracts/SubjectFactory.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Settings under test, with a user who changes them from outside.
class UserDefaultsSubject {
public:
  virtual ~UserDefaultsSubject() = default;

  virtual UserDefaults& userDefaults() = 0;
  virtual void setString(const std::string& key, const std::string& value) = 0;
  virtual void setNumber(const std::string& key, int value) = 0;
};

class UserDefaultsContract : public testing::TestWithParam<SubjectFactory<UserDefaultsSubject>> {
protected:
  UserDefaults& userDefaults() { return subject_->userDefaults(); }

  std::unique_ptr<UserDefaultsSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
