#pragma once

#include "ports/Signals.h"
#include "support/contracts/SubjectFactory.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace driftmark::test {

/// Signals under test.
class SignalsSubject {
public:
  virtual ~SignalsSubject() = default;

  virtual Signals& signals() = 0;

  /// Sends the signal to this process, which must survive it.
  virtual void send(QuitSignal signal) = 0;

  /// Whether the signal has its default action, so that it would end this process.
  virtual bool hasDefaultAction(QuitSignal signal) = 0;

  /// Runs the main queue until `done`; false after a long timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;
};

class SignalsContract : public testing::TestWithParam<SubjectFactory<SignalsSubject>> {
protected:
  Signals& signals() { return subject_->signals(); }

  std::unique_ptr<SignalsSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
