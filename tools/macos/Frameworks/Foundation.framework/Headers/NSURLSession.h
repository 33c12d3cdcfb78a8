#pragma once

#import <Foundation/NSError.h>
#import <Foundation/NSURL.h>
#import <Foundation/NSValue.h>

#pragma clang assume_nonnull begin

@class NSOperationQueue;

typedef enum NSURLRequestCachePolicy : NSUInteger {
  NSURLRequestUseProtocolCachePolicy = 0,
  NSURLRequestReloadIgnoringLocalCacheData = 1,
} NSURLRequestCachePolicy;

@interface NSURLRequest : NSObject
@property(nullable, readonly, copy) NSURL* URL;
+ (instancetype)requestWithURL:(NSURL*)URL
                   cachePolicy:(NSURLRequestCachePolicy)cachePolicy
               timeoutInterval:(NSTimeInterval)timeoutInterval;
@end

@interface NSURLResponse : NSObject
@end

@interface NSHTTPURLResponse : NSURLResponse
@end

@interface NSURLSessionTask : NSObject
- (void)resume;
- (void)cancel;
@end

@interface NSURLSessionDataTask : NSURLSessionTask
@end

@interface NSURLSessionDownloadTask : NSURLSessionTask
@end

@interface NSURLSessionConfiguration : NSObject
@property(class, readonly, strong) NSURLSessionConfiguration* defaultSessionConfiguration;
@property NSTimeInterval timeoutIntervalForResource;
@end

@protocol NSURLSessionDelegate;

@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(nullable id<NSURLSessionDelegate>)delegate
                            delegateQueue:(nullable NSOperationQueue*)queue;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request;
- (NSURLSessionDownloadTask*)downloadTaskWithRequest:(NSURLRequest*)request;
- (void)finishTasksAndInvalidate;
- (void)invalidateAndCancel;
@end

@protocol NSURLSessionDelegate <NSObject>
@end

@protocol NSURLSessionTaskDelegate <NSURLSessionDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* _Nullable))completionHandler;
- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(nullable NSError*)error;
@end

@protocol NSURLSessionDataDelegate <NSURLSessionTaskDelegate>
@optional
- (void)URLSession:(NSURLSession*)session
          dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveData:(NSData*)data;
@end

@protocol NSURLSessionDownloadDelegate <NSURLSessionTaskDelegate>
- (void)URLSession:(NSURLSession*)session
                 downloadTask:(NSURLSessionDownloadTask*)downloadTask
    didFinishDownloadingToURL:(NSURL*)location;
@end

#pragma clang assume_nonnull end
