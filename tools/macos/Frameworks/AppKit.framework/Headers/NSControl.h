#pragma once

#import <AppKit/NSFont.h>
#import <AppKit/NSImage.h>
#import <AppKit/NSWindow.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef enum NSCellImagePosition : NSUInteger {
  NSImageLeading = 7,
} NSCellImagePosition;

typedef NSInteger NSControlStateValue;
static const NSControlStateValue NSControlStateValueOn = 1;

@interface NSControl : NSView
@property(nullable, strong) NSFont* font;
@end

@interface NSButton : NSControl
@property(copy) NSString* title;
@property(nullable, strong) NSImage* image;
@property NSCellImagePosition imagePosition;
@end

#pragma clang assume_nonnull end
