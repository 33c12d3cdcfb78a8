#pragma once

#import <CoreFoundation/CoreFoundation.h>
#include <objc/NSObjCRuntime.h>
#include <objc/NSObject.h>

#pragma clang assume_nonnull begin

@class NSString;

typedef double NSTimeInterval;

typedef CGPoint NSPoint;

static inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
  NSPoint point;
  point.x = x;
  point.y = y;
  return point;
}

typedef struct _NSRange {
  NSUInteger location;
  NSUInteger length;
} NSRange;

static inline NSUInteger NSMaxRange(NSRange range) {
  return range.location + range.length;
}

@protocol NSCopying
- (id)copyWithZone:(nullable struct _NSZone*)zone;
@end

extern "C" void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));

@interface NSNotification : NSObject
@end

#pragma clang assume_nonnull end
