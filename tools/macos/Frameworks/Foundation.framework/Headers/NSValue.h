#pragma once

// Numbers, dates and bytes.

#import <Foundation/NSObjCRuntime.h>

#pragma clang assume_nonnull begin

@interface NSValue : NSObject
@end

@interface NSNumber : NSValue
@property(readonly) BOOL boolValue;
@property(readonly) long long longLongValue;
+ (NSNumber*)numberWithInt:(int)value;
@end

@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)secs;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)secs;
@end

@interface NSData : NSObject
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes __attribute__((objc_returns_inner_pointer));
@end

#pragma clang assume_nonnull end
