#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef NSInteger NSModalResponse;
static const NSModalResponse NSModalResponseOK = 1;
static const NSModalResponse NSModalResponseAbort = -1001;

@interface NSResponder : NSObject
@end

@interface NSView : NSResponder
@property CGRect frame;
@property(nullable, copy) NSString* toolTip;
@end

@interface NSScreen : NSObject
@property(class, readonly, nullable, strong) NSScreen* mainScreen;
@property(readonly) CGRect visibleFrame;
@end

@interface NSWindow : NSResponder
@property(readonly) CGRect frame;
@property BOOL preventsApplicationTerminationWhenModal;
@end

@interface NSPanel : NSWindow
@end

#pragma clang assume_nonnull end
