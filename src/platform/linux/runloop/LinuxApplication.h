#pragma once

#include "ports/Application.h"

namespace driftmark {

/// This process as a Qt application, beside its QApplication. Neither do closed windows
/// end it, nor can an open one keep it from ending.
class LinuxApplication final : public Application {
public:
  /// Nothing to do: a program without ordinary windows is in no task bar.
  void becomeAccessory() override {}

  void setDelegate(ApplicationDelegate* delegate) override { delegate_ = delegate; }

  /// The delegate hears of the launch from the event loop, and of the end when that has ended.
  void run() override;

  /// Raises the open windows of this program, as far as the desktop lets it; without any, there is
  /// nothing to bring to the front.
  void activateIgnoringOtherApplications() override;

  /// Ends the event loop from within, so that what waits before it still runs; asked before the
  /// loop has begun, it ends as soon as it does.
  void terminate() override;

  std::int32_t processIdentifier() const override;

  /// Tells the delegate of the end, unless it was told. For a process that ends without leaving the
  /// event loop.
  void willTerminate();

private:
  ApplicationDelegate* delegate_ = nullptr;
};

} // namespace driftmark
