#pragma once

#import <AppKit/NSEvent.h>
#import <AppKit/NSWindow.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@class NSApplication;

typedef enum NSApplicationActivationPolicy : NSInteger {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
  NSApplicationActivationPolicyProhibited = 2,
} NSApplicationActivationPolicy;

typedef NSString* NSAboutPanelOptionKey;
extern "C" NSAboutPanelOptionKey const NSAboutPanelOptionCredits;

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, weak) id<NSApplicationDelegate> delegate;
@property(nullable, readonly, weak) NSWindow* modalWindow;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)activationPolicy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps;
- (void)run;
- (void)stopModalWithCode:(NSModalResponse)returnCode;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)atStart;
- (void)terminate:(nullable id)sender;
- (void)orderFrontStandardAboutPanelWithOptions:
    (NSDictionary<NSAboutPanelOptionKey, id>*)optionsDictionary;
@end

#pragma clang assume_nonnull end
