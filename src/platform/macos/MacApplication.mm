// How the process starts, and how it ends while something modal is open.

#include "platform/macos/MacApplication.h"

#include "platform/macos/Bridge.h"

#include <unistd.h>

/// Forwards the launch and the end of the application to the listener.
@interface DriftmarkApplicationDelegate : NSObject <NSApplicationDelegate>
@property(nonatomic) driftmark::ApplicationDelegate* listener; ///< null for none
@end

@implementation DriftmarkApplicationDelegate

- (void)applicationDidFinishLaunching:(NSNotification*)notification {
  if (driftmark::ApplicationDelegate* const listener = self.listener)
    driftmark::noThrow([listener] { listener->applicationDidFinishLaunching(); });
}

- (void)applicationWillTerminate:(NSNotification*)notification {
  if (driftmark::ApplicationDelegate* const listener = self.listener)
    driftmark::noThrow([listener] { listener->applicationWillTerminate(); });
}

@end

namespace driftmark {

namespace {

/// The time for a modal window to close and for its caller to continue, before the next one is
/// closed.
constexpr Seconds closingInterval{0.01};

class MacActivity final : public Activity {
public:
  explicit MacActivity(const std::string& reason)
      : activity_([NSProcessInfo.processInfo
            beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                              reason:nsString(reason)]) {}
  MacActivity(const MacActivity&) = delete;
  ~MacActivity() override { [NSProcessInfo.processInfo endActivity:activity_]; }

private:
  const id<NSObject> activity_;
};

} // namespace

MacApplication::MacApplication(MainQueue& mainQueue)
    : mainQueue_(mainQueue), application_(NSApplication.sharedApplication),
      delegate_([[DriftmarkApplicationDelegate alloc] init]) {
  application_.delegate = delegate_;
}

MacApplication::~MacApplication() {
  application_.delegate = nil;
}

void MacApplication::becomeAccessory() {
  [application_ setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

void MacApplication::setDelegate(ApplicationDelegate* delegate) {
  delegate_.listener = delegate;
}

void MacApplication::run() {
  [application_ run];
}

void MacApplication::activateIgnoringOtherApplications() {
  [application_ activateIgnoringOtherApps:YES];
}

void MacApplication::terminate() {
  isTerminating_ = true;
  mainQueue_.async([this] { end(); });
}

void MacApplication::end() {
  if (application_.modalWindow == nil) {
    [application_ terminate:nil];
    return;
  }
  closeModalWindow();
  mainQueue_.after(closingInterval, [this] { end(); });
}

/// A modal loop checks only after an event whether it was stopped, so one is posted.
void MacApplication::closeModalWindow() {
  [application_ stopModalWithCode:NSModalResponseAbort];
  NSEvent* const event = [NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                            location:NSMakePoint(0, 0)
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:0
                                             context:nil
                                             subtype:0
                                               data1:0
                                               data2:0];
  if (event != nil)
    [application_ postEvent:event atStart:NO];
}

std::unique_ptr<Activity> MacApplication::beginActivity(const std::string& reason) {
  return std::make_unique<MacActivity>(reason);
}

std::int32_t MacApplication::processIdentifier() const {
  return getpid();
}

} // namespace driftmark
