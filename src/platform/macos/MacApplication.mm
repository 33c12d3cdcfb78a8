#include "platform/macos/MacApplication.h"

#include "platform/macos/NoThrow.h"

#include <unistd.h>

/// Passes on what AppKit tells of the launch and the end.
@interface DriftmarkApplicationDelegate : NSObject <NSApplicationDelegate>
@property(nonatomic) driftmark::ApplicationDelegate* listener; ///< null for nobody
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

/// For a modal window to close, and for what waited for its answer to go on.
constexpr Seconds closingTime{0.01};

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
  mainQueue_.async([this] { end(); });
}

void MacApplication::end() {
  if (application_.modalWindow == nil) {
    [application_ terminate:nil];
    return;
  }
  closeModalWindow();
  mainQueue_.after(closingTime, [this] { end(); });
}

/// A modal loop looks whether it was stopped after each event, and at no other time.
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

std::int32_t MacApplication::processIdentifier() const {
  return getpid();
}

} // namespace driftmark
