#pragma once

#include "ports/Application.h"
#include "ports/Platform.h"

#include <memory>

namespace driftmark {

class StatusItemController;

/// Hears of the application's launch and end. Main thread only.
class AppDelegate final : public ApplicationDelegate {
public:
  /// The ports in `platform` outlive it.
  explicit AppDelegate(const Platform& platform);
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;
  ~AppDelegate() override;

  /// Puts up the status item, unless the program has just moved and is about to reopen.
  void applicationDidFinishLaunching() override;

  /// Ends every child process.
  void applicationWillTerminate() override;

private:
  const Platform platform_;
  std::shared_ptr<StatusItemController> controller_; ///< absent until launching has finished
};

} // namespace driftmark
