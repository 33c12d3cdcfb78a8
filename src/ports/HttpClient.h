#pragma once

#include "ports/Clock.h"
#include "ports/PlatformError.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace driftmark {

/// Fetches what is behind an HTTPS URL. The server's certificate is checked against the CA
/// certificates of the system; redirects are followed to HTTPS URLs only. The status of a reply is
/// ignored: an error page is a reply like any other. The headers of a reply may have any size.
class HttpClient {
public:
  enum class CachePolicy {
    useProtocolCachePolicy,      ///< as the server's headers allow
    reloadIgnoringLocalCacheData ///< always from the server
  };

  struct Request {
    std::string url;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    Seconds timeoutInterval{60.0}; ///< without a byte from the server
    /// From the call until the whole reply is there; unlimited without a value.
    std::optional<Seconds> maxDuration = std::nullopt;
  };

  /// The bytes of a reply.
  struct Body {
    std::string bytes;
  };

  /// A file that holds the bytes of a reply. It is removed when the handler returns, unless it was
  /// moved elsewhere.
  struct File {
    std::string path;
  };

  using FetchHandler = std::function<void(std::variant<Body, PlatformError> reply)>;
  using DownloadHandler = std::function<void(std::variant<File, PlatformError> reply)>;

  virtual ~HttpClient() = default;

  /// Sends `request` and calls `onReply` once, on any thread, never inside this call. A body of
  /// more than `maxBodySize` bytes is an error, reported as soon as that many bytes have arrived.
  /// Main thread only. Destroying the client drops pending requests without a call.
  virtual void fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) = 0;

  /// Downloads `url` to a file, which is written as the bytes arrive. Otherwise like `fetch`, with
  /// the default cache policy and timeouts.
  virtual void download(const std::string& url, DownloadHandler onReply) = 0;
};

} // namespace driftmark
