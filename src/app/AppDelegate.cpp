// What happens when the application has launched and when it ends.

#include "app/AppDelegate.h"

#include "install/UserInstall.h"
#include "ui/StatusItemController.h"

namespace driftmark {

AppDelegate::AppDelegate(const Platform& platform) : platform_(platform) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  if (UserInstall::offerIfNeeded(platform_))
    return;
  // The main queue runs while the offer is open, so a request to end may have come meanwhile.
  if (platform_.application.isTerminating())
    return;
  controller_ = StatusItemController::make(platform_);
}

void AppDelegate::applicationWillTerminate() {
  if (controller_)
    controller_->shutdown();
}

} // namespace driftmark
