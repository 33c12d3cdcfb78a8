// The part of ServiceManagement that this program calls, declared for building without Apple's SDK.
#pragma once

#import <Foundation/Foundation.h>

#pragma clang assume_nonnull begin

typedef enum SMAppServiceStatus : NSInteger {
  SMAppServiceStatusNotRegistered = 0,
  SMAppServiceStatusEnabled = 1,
  SMAppServiceStatusRequiresApproval = 2,
  SMAppServiceStatusNotFound = 3,
} SMAppServiceStatus;

@interface SMAppService : NSObject
@property(class, readonly) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError* _Nullable*)error;
- (BOOL)unregisterAndReturnError:(NSError* _Nullable*)error;
@end

#pragma clang assume_nonnull end
