#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@class NSGraphicsContext;

typedef enum NSEventType : NSUInteger {
  NSEventTypeApplicationDefined = 15,
} NSEventType;

typedef NSUInteger NSEventModifierFlags;

@interface NSEvent : NSObject
+ (nullable NSEvent*)otherEventWithType:(NSEventType)type
                               location:(NSPoint)location
                          modifierFlags:(NSEventModifierFlags)flags
                              timestamp:(NSTimeInterval)time
                           windowNumber:(NSInteger)windowNumber
                                context:(nullable NSGraphicsContext*)unusedPassNil
                                subtype:(short)subtype
                                  data1:(NSInteger)data1
                                  data2:(NSInteger)data2;
@end

#pragma clang assume_nonnull end
