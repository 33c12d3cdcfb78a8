#pragma once

#include "ports/Application.h"
#include "ports/Platform.h"

#include <memory>

namespace driftmark {

class StatusItemController;

/// Starts the interface when the application has launched, and stops it at the end. Main thread
/// only.
class AppDelegate final : public ApplicationDelegate {
public:
  /// The ports in `platform` outlive it.
  explicit AppDelegate(const Platform& platform);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;
  ~AppDelegate() override;

  /// Offers the move to Applications, then makes the controller. Makes none when the program has
  /// moved and is about to reopen, or was asked to end while the offer was open.
  void applicationDidFinishLaunching() override;

  /// Shuts the controller down, which ends every child process.
  void applicationWillTerminate() override;

private:
  const Platform platform_;
  std::shared_ptr<StatusItemController> controller_; ///< absent when it was not made
};

} // namespace driftmark
