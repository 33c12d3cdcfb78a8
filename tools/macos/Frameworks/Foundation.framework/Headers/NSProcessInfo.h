#pragma once

#import <Foundation/NSString.h>

#pragma clang assume_nonnull begin

typedef enum NSActivityOptions : uint64_t {
  NSActivityUserInitiatedAllowingIdleSystemSleep = 0x00EFFFFF
} NSActivityOptions;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
- (void)endActivity:(id<NSObject>)activity;
@end

#pragma clang assume_nonnull end
