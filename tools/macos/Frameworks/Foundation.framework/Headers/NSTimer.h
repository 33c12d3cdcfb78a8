#pragma once

// Timers and the run loops that they fire in.

#import <Foundation/NSString.h>
#import <Foundation/NSValue.h>

#pragma clang assume_nonnull begin

typedef NSString* NSRunLoopMode;
extern "C" NSRunLoopMode const NSDefaultRunLoopMode;
extern "C" NSRunLoopMode const NSRunLoopCommonModes;

@interface NSTimer : NSObject
@property NSTimeInterval tolerance;
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block;
- (void)invalidate;
@end

@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limitDate;
@end

#pragma clang assume_nonnull end
