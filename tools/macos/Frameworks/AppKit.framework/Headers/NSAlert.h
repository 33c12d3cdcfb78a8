#pragma once

#import <AppKit/NSControl.h>
#import <AppKit/NSWindow.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

static const NSModalResponse NSAlertFirstButtonReturn = 1000;

@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property(readonly, strong) NSWindow* window;
@property(nullable, strong) NSView* accessoryView;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (void)layout;
- (NSModalResponse)runModal;
@end

#pragma clang assume_nonnull end
