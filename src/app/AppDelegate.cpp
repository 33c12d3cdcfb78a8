#include "app/AppDelegate.h"

#include "install/UserInstall.h"
#include "ui/StatusItemController.h"

namespace driftmark {

AppDelegate::AppDelegate(const Platform& platform) : platform_(platform) {}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
  if (UserInstall::offerIfNeeded(platform_))
    return;
  controller_ = StatusItemController::make(platform_);
}

void AppDelegate::applicationWillTerminate() {
  if (controller_)
    controller_->shutdown();
}

} // namespace driftmark
