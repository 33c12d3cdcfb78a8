#pragma once

#import <Foundation/NSCollections.h>
#import <Foundation/NSString.h>

#pragma clang assume_nonnull begin

@class NSError;

typedef NSString* NSURLResourceKey;
typedef NSString* NSURLUbiquitousItemDownloadingStatus;

extern "C" {
extern NSURLResourceKey const NSURLIsRegularFileKey;
extern NSURLResourceKey const NSURLIsSymbolicLinkKey;
extern NSURLResourceKey const NSURLIsUbiquitousItemKey;
extern NSURLResourceKey const NSURLTotalFileAllocatedSizeKey;
extern NSURLResourceKey const NSURLUbiquitousItemDownloadingStatusKey;

extern NSURLUbiquitousItemDownloadingStatus const NSURLUbiquitousItemDownloadingStatusNotDownloaded;
extern NSURLUbiquitousItemDownloadingStatus const NSURLUbiquitousItemDownloadingStatusDownloaded;
extern NSURLUbiquitousItemDownloadingStatus const NSURLUbiquitousItemDownloadingStatusCurrent;
}

@interface NSURL : NSObject
@property(nullable, readonly, copy) NSString* absoluteString;
@property(nullable, readonly, copy) NSString* scheme;
@property(nullable, readonly, copy) NSString* path;
@property(readonly, getter=isFileURL) BOOL fileURL;
@property(nullable, readonly, copy) NSURL* URLByResolvingSymlinksInPath;
+ (nullable instancetype)URLWithString:(NSString*)URLString;
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDir
                                relativeToURL:(nullable NSURL*)baseURL;
- (nullable NSDictionary<NSURLResourceKey, id>*)resourceValuesForKeys:
                                                    (NSArray<NSURLResourceKey>*)keys
                                                                error:(NSError* _Nullable*)error;
@end

#pragma clang assume_nonnull end
