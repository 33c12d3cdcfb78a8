#pragma once

#import <Foundation/NSObjCRuntime.h>

#pragma clang assume_nonnull begin

@class NSData;

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(readonly, copy) NSString* lowercaseString;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)len
                              encoding:(NSStringEncoding)encoding;
- (nullable NSData*)dataUsingEncoding:(NSStringEncoding)encoding allowLossyConversion:(BOOL)lossy;
- (BOOL)isEqualToString:(NSString*)aString;
- (NSRange)rangeOfComposedCharacterSequenceAtIndex:(NSUInteger)index;
- (NSString*)substringToIndex:(NSUInteger)to;
@end

extern "C" {
NSString* NSHomeDirectory(void);
NSString* NSTemporaryDirectory(void);
}

#pragma clang assume_nonnull end
