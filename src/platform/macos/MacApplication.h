#pragma once

#include "ports/Application.h"
#include "ports/MainQueue.h"

#import <AppKit/AppKit.h>

@class DriftmarkApplicationDelegate;

namespace driftmark {

/// This process as an AppKit application. There is one at a time.
class MacApplication final : public Application {
public:
  /// The main queue outlives this object.
  explicit MacApplication(MainQueue& mainQueue);
  MacApplication(const MacApplication&) = delete;
  ~MacApplication() override;

  void becomeAccessory() override;
  void setDelegate(ApplicationDelegate* delegate) override;

  /// Does not return: the system ends the process here.
  void run() override;

  void activateIgnoringOtherApplications() override;

  /// Ends the process from the main queue. Modal windows are closed first, the innermost first.
  void terminate() override;

  bool isTerminating() const override { return isTerminating_; }

  /// Keeps the process out of App Nap.
  std::unique_ptr<Activity> beginActivity(const std::string& reason) override;

  std::int32_t processIdentifier() const override;

private:
  void end();
  void closeModalWindow();

  MainQueue& mainQueue_;
  NSApplication* const application_;
  DriftmarkApplicationDelegate* const delegate_; ///< AppKit does not retain it
  bool isTerminating_ = false;
};

} // namespace driftmark
