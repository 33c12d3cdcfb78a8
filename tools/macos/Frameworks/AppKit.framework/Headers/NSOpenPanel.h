#pragma once

#import <AppKit/NSWindow.h>
#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@interface NSSavePanel : NSPanel
@property(nullable, readonly, copy) NSURL* URL;
@property(nullable, copy) NSURL* directoryURL;
@property(null_resettable, copy) NSString* prompt;
@property(null_resettable, copy) NSString* title;
@property(null_resettable, copy) NSString* message;
- (NSModalResponse)runModal;
@end

@interface NSOpenPanel : NSSavePanel
@property BOOL canChooseDirectories;
@property BOOL canChooseFiles;
@property BOOL allowsMultipleSelection;
@property BOOL canDownloadUbiquitousContents;
@property BOOL canResolveUbiquitousConflicts;
+ (NSOpenPanel*)openPanel;
@end

#pragma clang assume_nonnull end
