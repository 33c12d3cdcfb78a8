#pragma once

#include "ports/Application.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace driftmark::test {

/// An application whose run is defined by the test.
class TestApplication final : public Application {
public:
  void becomeAccessory() override { isAccessory_ = true; }
  void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }
  void run() override {
    if (onRun_)
      onRun_();
  }
  void activateIgnoringOtherApplications() override { ++activations_; }
  void terminate() override { ++terminateRequests_; }
  bool isTerminating() const override { return terminateRequests_ > 0; }
  std::unique_ptr<Activity> beginActivity(const std::string& reason) override {
    return std::make_unique<CountedActivity>(*this, reason);
  }
  std::int32_t processIdentifier() const override { return processIdentifier_; }

  /// Sets what happens between the start and the end of a run.
  void onRun(std::function<void()> handler) { onRun_ = std::move(handler); }

  void setProcessIdentifier(std::int32_t identifier) { processIdentifier_ = identifier; }

  bool isAccessory() const { return isAccessory_; }
  ApplicationDelegate* delegate() const { return delegate_; }
  int activations() const { return activations_; }
  int terminateRequests() const { return terminateRequests_; }

  /// How many activities were begun so far, and how many of them have not ended.
  int begunActivities() const { return begunActivities_; }
  int runningActivities() const { return runningActivities_; }

  /// Why the last activity was begun.
  const std::string& activityReason() const { return activityReason_; }

private:
  class CountedActivity final : public Activity {
  public:
    CountedActivity(TestApplication& application, const std::string& reason)
        : application_(application) {
      ++application_.begunActivities_;
      ++application_.runningActivities_;
      application_.activityReason_ = reason;
    }
    CountedActivity(const CountedActivity&) = delete;
    CountedActivity& operator=(const CountedActivity&) = delete;
    ~CountedActivity() override { --application_.runningActivities_; }

  private:
    TestApplication& application_;
  };

  std::function<void()> onRun_;
  ApplicationDelegate* delegate_ = nullptr;
  bool isAccessory_ = false;
  std::int32_t processIdentifier_ = 4711;
  int activations_ = 0;
  int terminateRequests_ = 0;
  int begunActivities_ = 0;
  int runningActivities_ = 0;
  std::string activityReason_;
};

} // namespace driftmark::test
