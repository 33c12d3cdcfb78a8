#pragma once

#import <Foundation/NSCollections.h>
#import <Foundation/NSString.h>

#pragma clang assume_nonnull begin

typedef NSString* NSErrorDomain;
typedef NSString* NSErrorUserInfoKey;

extern "C" NSErrorDomain const NSCocoaErrorDomain;

/// Codes of NSCocoaErrorDomain.
enum : NSInteger {
  NSFileWriteUnknownError = 512,
};

@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
+ (instancetype)errorWithDomain:(NSErrorDomain)domain
                           code:(NSInteger)code
                       userInfo:(nullable NSDictionary<NSErrorUserInfoKey, id>*)dict;
@end

#pragma clang assume_nonnull end
