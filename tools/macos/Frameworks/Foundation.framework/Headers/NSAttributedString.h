#pragma once

#import <Foundation/NSCollections.h>
#import <Foundation/NSString.h>

#pragma clang assume_nonnull begin

typedef NSString* NSAttributedStringKey;

@interface NSAttributedString : NSObject
- (instancetype)initWithString:(NSString*)str
                    attributes:(nullable NSDictionary<NSAttributedStringKey, id>*)attrs;
@end

#pragma clang assume_nonnull end
