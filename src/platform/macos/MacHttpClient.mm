// How one request runs, and when it is refused or cancelled.

#include "platform/macos/MacHttpClient.h"

#include "platform/macos/Bridge.h"

#include <utility>
#include <variant>

#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

namespace {

using namespace driftmark;

/// Receives either a result (the body, or the path of a file) or the error.
using Handler = std::function<void(std::variant<std::string, PlatformError>)>;

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

- (void)endWith:(std::variant<std::string, PlatformError>)result {
  if (const Handler onEnd = std::exchange(_onEnd, nullptr))
    noThrow([&] { onEnd(std::move(result)); });
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
    [self endWith:path(location)];
}

/// A successful download has already been reported.
- (void)URLSession:(NSURLSession*)session
                    task:(NSURLSessionTask*)task
    didCompleteWithError:(NSError*)error {
  if (_fault)
    [self endWith:PlatformError{_fault}];
  else if (error != nil)
    [self endWith:platformError(error)];
  else
    [self endWith:std::move(_body)];
}

@end

namespace driftmark {

namespace {

NSURLRequestCachePolicy nativePolicy(HttpClient::CachePolicy policy) {
  return policy == HttpClient::CachePolicy::reloadIgnoringLocalCacheData
             ? NSURLRequestReloadIgnoringLocalCacheData
             : NSURLRequestUseProtocolCachePolicy;
}

/// The result as `Success`, or the error.
template <class Success>
std::variant<Success, PlatformError> replyOf(std::variant<std::string, PlatformError> result) {
  if (auto* const error = std::get_if<PlatformError>(&result))
    return std::move(*error);
  return Success{std::get<std::string>(std::move(result))};
}

/// Sends `request` in a session of its own. With `maxBodySize` the result is a body of at most so
/// many bytes, without it a file.
void send(const HttpClient::Request& request, std::optional<std::size_t> maxBodySize,
          Handler onEnd) {
  NSURL* const url = parsedUrl(request.url);
  if (!isSecure(url)) {
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
      noThrow([&] { onEnd(PlatformError{insecureUrl}); });
    });
    return;
  }
  DriftmarkTransfer* const transfer = [[DriftmarkTransfer alloc] init];
  transfer.onEnd = std::move(onEnd);
  transfer.remainder = maxBodySize.value_or(0);
  NSURLSessionConfiguration* const configuration =
      NSURLSessionConfiguration.defaultSessionConfiguration;
  if (request.maxDuration)
    configuration.timeoutIntervalForResource = request.maxDuration->count();
  NSURLSession* const session = [NSURLSession sessionWithConfiguration:configuration
                                                              delegate:transfer
                                                         delegateQueue:nil];
  NSURLRequest* const sent = [NSURLRequest requestWithURL:url
                                              cachePolicy:nativePolicy(request.cachePolicy)
                                          timeoutInterval:request.timeoutInterval.count()];
  NSURLSessionTask* const task =
      maxBodySize ? [session dataTaskWithRequest:sent] : [session downloadTaskWithRequest:sent];
  [task resume];
  [session finishTasksAndInvalidate];
}

} // namespace

MacHttpClient::~MacHttpClient() {
  const std::lock_guard lock(gate_->mutex);
  gate_->isOpen = false;
}

void MacHttpClient::fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) {
  send(request, maxBodySize, [gate = gate_, onReply = std::move(onReply)](auto result) {
    const std::lock_guard lock(gate->mutex);
    if (gate->isOpen)
      onReply(replyOf<Body>(std::move(result)));
  });
}

void MacHttpClient::download(const std::string& url, DownloadHandler onReply) {
  send({.url = url}, std::nullopt, [gate = gate_, onReply = std::move(onReply)](auto result) {
    const std::lock_guard lock(gate->mutex);
    if (gate->isOpen)
      onReply(replyOf<File>(std::move(result)));
  });
}

} // namespace driftmark
