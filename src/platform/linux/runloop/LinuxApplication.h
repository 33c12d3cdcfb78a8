#pragma once

#include "ports/Application.h"

namespace driftmark {

/// This process as a Qt application, beside its QApplication. Closing windows does not end it, and
/// open windows do not keep it from ending.
class LinuxApplication final : public Application {
public:
  /// Does nothing: a program without ordinary windows is in no task bar.
  void becomeAccessory() override {}

  void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }

  /// The delegate is notified of the launch from the event loop, and of termination after the loop
  /// has ended.
  void run() override;

  /// Raises the open windows of this program, as far as the desktop allows, except those that are
  /// shown without activating them, such as the strip. Does nothing without windows.
  void activateIgnoringOtherApplications() override;

  /// Ends the event loop by an event, so that earlier events are still handled. Called before the
  /// loop starts, it ends the loop as soon as that starts.
  void terminate() override;

  bool isTerminating() const override { return isTerminating_; }

  /// Does nothing: no process is slowed down for being in the background.
  std::unique_ptr<Activity> beginActivity(const std::string& reason) override;

  std::int32_t processIdentifier() const override;

  /// Notifies the delegate of termination, unless that was done before. For a process that ends
  /// without leaving the event loop.
  void willTerminate();

private:
  ApplicationDelegate* delegate_ = nullptr;
  bool isTerminating_ = false;
};

} // namespace driftmark
