#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

@interface NSImage : NSObject
+ (nullable instancetype)imageWithSystemSymbolName:(NSString*)name
                          accessibilityDescription:(nullable NSString*)description;
- (void)setTemplate:(BOOL)isTemplate;
@end

#pragma clang assume_nonnull end
