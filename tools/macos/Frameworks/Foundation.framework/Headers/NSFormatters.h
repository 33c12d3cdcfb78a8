#pragma once

#import <Foundation/NSString.h>
#import <Foundation/NSValue.h>

#pragma clang assume_nonnull begin

@interface NSFormatter : NSObject
@end

typedef enum NSByteCountFormatterCountStyle : NSInteger {
  NSByteCountFormatterCountStyleFile = 0,
} NSByteCountFormatterCountStyle;

@interface NSByteCountFormatter : NSFormatter
+ (NSString*)stringFromByteCount:(long long)byteCount
                      countStyle:(NSByteCountFormatterCountStyle)countStyle;
@end

@interface NSRelativeDateTimeFormatter : NSFormatter
- (NSString*)localizedStringForDate:(NSDate*)date relativeToDate:(NSDate*)referenceDate;
@end

#pragma clang assume_nonnull end
