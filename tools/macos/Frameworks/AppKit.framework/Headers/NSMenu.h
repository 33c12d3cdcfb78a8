#pragma once

#import <AppKit/NSControl.h>
#import <AppKit/NSImage.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@class NSMenu;

@interface NSMenuItem : NSObject
@property(copy) NSString* title;
@property(nullable, strong) NSImage* image;
@property NSControlStateValue state;
@property(nullable, weak) id target;
@property(nullable) SEL action;
@property NSInteger tag;
@property(nullable, strong) id representedObject;
@property(nullable, copy) NSString* toolTip;
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)string
                       action:(nullable SEL)selector
                keyEquivalent:(NSString*)charCode;
@end

@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu*)menu;
- (void)menuWillOpen:(NSMenu*)menu;
@end

@interface NSMenu : NSObject
@property(nullable, weak) id<NSMenuDelegate> delegate;
- (instancetype)initWithTitle:(NSString*)title;
- (void)addItem:(NSMenuItem*)newItem;
- (void)removeAllItems;
- (nullable NSMenuItem*)itemWithTag:(NSInteger)tag;
@end

#pragma clang assume_nonnull end
