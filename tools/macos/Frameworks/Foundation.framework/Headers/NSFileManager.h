#pragma once

#import <Foundation/NSURL.h>

#pragma clang assume_nonnull begin

typedef NSString* NSFileAttributeKey;

typedef NSUInteger NSDirectoryEnumerationOptions;

@interface NSDirectoryEnumerator<ObjectType> : NSEnumerator <ObjectType>
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (BOOL)fileExistsAtPath:(NSString*)path;
- (BOOL)createDirectoryAtURL:(NSURL*)url
    withIntermediateDirectories:(BOOL)createIntermediates
                     attributes:(nullable NSDictionary<NSFileAttributeKey, id>*)attributes
                          error:(NSError* _Nullable*)error;
- (BOOL)removeItemAtURL:(NSURL*)URL error:(NSError* _Nullable*)error;
- (BOOL)moveItemAtURL:(NSURL*)srcURL toURL:(NSURL*)dstURL error:(NSError* _Nullable*)error;
- (BOOL)trashItemAtURL:(NSURL*)url
      resultingItemURL:(NSURL* _Nullable* _Nullable)outResultingURL
                 error:(NSError* _Nullable*)error;
- (nullable NSDirectoryEnumerator<NSURL*>*)
               enumeratorAtURL:(NSURL*)url
    includingPropertiesForKeys:(nullable NSArray<NSURLResourceKey>*)keys
                       options:(NSDirectoryEnumerationOptions)mask
                  errorHandler:(BOOL (^_Nullable)(NSURL* url, NSError* error))handler;
- (BOOL)evictUbiquitousItemAtURL:(NSURL*)url error:(NSError* _Nullable*)error;
@end

#pragma clang assume_nonnull end
