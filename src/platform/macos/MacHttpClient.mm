// How one request runs, and when it is refused or cancelled.

#include "platform/macos/MacHttpClient.h"

#include "platform/macos/Bridge.h"

#include <utility>

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

namespace {

using namespace driftmark;

/// Receives either a result (the body, or the path of a file) or the error.
using Handler = std::function<void(std::optional<std::string>, std::optional<PlatformError>)>;

constexpr const char* insecureUrl = "Only secure (https) addresses are supported.";

bool isSecure(NSURL* url) {
  return [url.scheme.lowercaseString isEqualToString:@"https"];
}

} // namespace

/// The delegate of a session with one task, called on the session's own queue.
@interface DriftmarkTransfer : NSObject <NSURLSessionDataDelegate, NSURLSessionDownloadDelegate>
@property(nonatomic) Handler onEnd;         ///< empty after its call
@property(nonatomic) std::size_t remainder; ///< bytes that the body may still grow by
@end

@implementation DriftmarkTransfer {
  std::string _body;
  const char* _fault; ///< the reason why this object cancelled the task
}

- (void)endWith:(std::optional<std::string>)result error:(std::optional<PlatformError>)error {
  if (const Handler onEnd = std::exchange(_onEnd, nullptr))
    noThrow([&] { onEnd(std::move(result), std::move(error)); });
}

- (void)cancel:(NSURLSessionTask*)task because:(const char*)fault {
  _fault = fault;
  [task cancel];
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest* _Nullable))completionHandler {
  const bool isFollowed = isSecure(request.URL);
  if (!isFollowed)
    [self cancel:task because:insecureUrl];
  completionHandler(isFollowed ? request : nil);
}

- (void)URLSession:(NSURLSession*)session
          dataTask:(NSURLSessionDataTask*)dataTask
    didReceiveData:(NSData*)data {
  if (data.length > _remainder)
    return [self cancel:dataTask because:"The server sent more than was expected."];
  _remainder -= data.length;
  if (data.length > 0)
    _body.append(static_cast<const char*>(data.bytes), data.length);
}

- (void)URLSession:(NSURLSession*)session
                 downloadTask:(NSURLSessionDownloadTask*)downloadTask
    didFinishDownloadingToURL:(NSURL*)location {
  if (!_fault)
    [self endWith:path(location) error:std::nullopt];
}

/// A successful download has already been reported.
- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(NSError*)error {
  if (_fault)
    [self endWith:std::nullopt error:PlatformError{_fault}];
  else if (error != nil)
    [self endWith:std::nullopt error:platformError(error)];
  else
    [self endWith:std::move(_body) error:std::nullopt];
}

@end

namespace driftmark {

namespace {

NSURLRequestCachePolicy nativePolicy(HttpClient::CachePolicy policy) {
  return policy == HttpClient::CachePolicy::reloadIgnoringLocalCacheData
             ? NSURLRequestReloadIgnoringLocalCacheData
             : NSURLRequestUseProtocolCachePolicy;
}

/// Sends `request` in a session of its own. With `largestBody` the result is a body of at most so
/// many bytes, without it a file.
void send(const HttpClient::Request& request, std::optional<std::size_t> largestBody,
          Handler onEnd) {
  NSURL* const url = parsedUrl(request.url);
  if (!isSecure(url)) {
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
      noThrow([&] { onEnd(std::nullopt, PlatformError{insecureUrl}); });
    });
    return;
  }
  DriftmarkTransfer* const transfer = [[DriftmarkTransfer alloc] init];
  transfer.onEnd = std::move(onEnd);
  transfer.remainder = largestBody.value_or(0);
  NSURLSession* const session =
      [NSURLSession sessionWithConfiguration:NSURLSessionConfiguration.defaultSessionConfiguration
                                    delegate:transfer
                               delegateQueue:nil];
  NSURLRequest* const sent = [NSURLRequest requestWithURL:url
                                              cachePolicy:nativePolicy(request.cachePolicy)
                                          timeoutInterval:request.timeoutInterval.count()];
  NSURLSessionTask* const task =
      largestBody ? [session dataTaskWithRequest:sent] : [session downloadTaskWithRequest:sent];
  [task resume];
  [session finishTasksAndInvalidate];
}

} // namespace

MacHttpClient::~MacHttpClient() {
  const std::lock_guard lock(gate_->mutex);
  gate_->isOpen = false;
}

void MacHttpClient::fetch(const Request& request, std::size_t largestBody, DataHandler onReply) {
  send(request, largestBody, [gate = gate_, onReply = std::move(onReply)](auto body, auto error) {
    const std::lock_guard lock(gate->mutex);
    if (gate->isOpen)
      onReply({.data = std::move(body), .error = std::move(error)});
  });
}

void MacHttpClient::download(const std::string& url, DownloadHandler onReply) {
  send({.url = url}, std::nullopt,
       [gate = gate_, onReply = std::move(onReply)](auto file, auto error) {
         const std::lock_guard lock(gate->mutex);
         if (gate->isOpen)
           onReply({.file = std::move(file), .error = std::move(error)});
       });
}

} // namespace driftmark
