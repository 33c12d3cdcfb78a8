// Texts that scroll.
#pragma once

#import <AppKit/NSFont.h>
#import <AppKit/NSWindow.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@interface NSScrollView : NSView
@property BOOL drawsBackground;
@property(nullable, strong) NSView* documentView;
@end

@interface NSText : NSView
@property(copy) NSString* string;
@property(getter=isEditable) BOOL editable;
@property BOOL drawsBackground;
@property(nullable, strong) NSFont* font;
@property(nullable, copy) NSColor* textColor;
@end

@interface NSTextView : NSText
+ (NSScrollView*)scrollableTextView;
@end

#pragma clang assume_nonnull end
