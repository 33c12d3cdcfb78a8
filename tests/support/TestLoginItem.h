#pragma once

#include "ports/LoginItem.h"

#include <string>
#include <utility>

namespace driftmark::test {

/// A login item in memory.
class TestLoginItem final : public LoginItem {
public:
  Status status() const override { return status_; }

  std::optional<PlatformError> registerItem() override {
    ++registrations_;
    if (!failure_)
      status_ = Status::enabled;
    return failure_;
  }

  std::optional<PlatformError> unregisterItem() override {
    ++unregistrations_;
    if (!failure_)
      status_ = Status::notRegistered;
    return failure_;
  }

  /// Changes the status as the system does.
  void setStatus(Status status) { status_ = status; }

  /// Makes both operations fail.
  void fail(std::string description) { failure_ = {std::move(description)}; }

  int registrations() const { return registrations_; }
  int unregistrations() const { return unregistrations_; }

private:
  Status status_ = Status::notRegistered;
  std::optional<PlatformError> failure_;
  int registrations_ = 0;
  int unregistrations_ = 0;
};

} // namespace driftmark::test
