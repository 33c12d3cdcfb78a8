#include "platform/macos/MacAdapters.h"
#include "platform/macos/Strings.h"

#import <AppKit/AppKit.h>

namespace driftmark {

/// One that ends meanwhile has no process any more; to `kill`, its identifier would mean all.
std::vector<std::int32_t>
MacRunningApplications::withBundleIdentifier(const std::string& identifier) const {
  std::vector<std::int32_t> processes;
  for (NSRunningApplication* application in
       [NSRunningApplication runningApplicationsWithBundleIdentifier:nsString(identifier)])
    if (const pid_t process = application.processIdentifier; process > 0)
      processes.push_back(process);
  return processes;
}

} // namespace driftmark
