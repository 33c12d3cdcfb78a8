#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

#import <ServiceManagement/ServiceManagement.h>

namespace driftmark {

LoginItem::Status MacLoginItem::status() const {
  switch (SMAppService.mainAppService.status) {
  case SMAppServiceStatusNotRegistered:
    return Status::notRegistered;
  case SMAppServiceStatusEnabled:
    return Status::enabled;
  case SMAppServiceStatusRequiresApproval:
    return Status::requiresApproval;
  case SMAppServiceStatusNotFound:
    break;
  }
  return Status::notFound;
}

std::optional<PlatformError> MacLoginItem::registerItem() {
  NSError* error = nil;
  const bool done = [SMAppService.mainAppService registerAndReturnError:&error];
  return done ? std::nullopt : std::optional(PlatformError{string(error.description)});
}

std::optional<PlatformError> MacLoginItem::unregisterItem() {
  NSError* error = nil;
  const bool done = [SMAppService.mainAppService unregisterAndReturnError:&error];
  return done ? std::nullopt : std::optional(PlatformError{string(error.description)});
}

} // namespace driftmark
