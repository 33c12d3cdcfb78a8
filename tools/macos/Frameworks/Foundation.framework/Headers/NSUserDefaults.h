#pragma once

#import <Foundation/NSString.h>

#pragma clang assume_nonnull begin

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (nullable id)objectForKey:(NSString*)defaultName;
- (void)setObject:(nullable id)value forKey:(NSString*)defaultName;
- (void)setBool:(BOOL)value forKey:(NSString*)defaultName;
- (void)removePersistentDomainForName:(NSString*)domainName;
@end

#pragma clang assume_nonnull end
