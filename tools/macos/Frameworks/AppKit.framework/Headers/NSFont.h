// Fonts, colours and the attributes of texts.
#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef CGFloat NSFontWeight;
extern "C" const NSFontWeight NSFontWeightRegular;

extern "C" NSAttributedStringKey const NSFontAttributeName;
extern "C" NSAttributedStringKey const NSForegroundColorAttributeName;

@interface NSFont : NSObject
@property(class, readonly) CGFloat smallSystemFontSize;
+ (NSFont*)systemFontOfSize:(CGFloat)fontSize;
+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)fontSize weight:(NSFontWeight)weight;
@end

@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* labelColor;
@end

#pragma clang assume_nonnull end
