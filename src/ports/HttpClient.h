#pragma once

#include "ports/Clock.h"
#include "ports/PlatformError.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace driftmark {

/// Fetches what is behind an HTTPS address. The server's certificate is checked against the
/// system's authorities; redirects are followed to HTTPS addresses only. The status of a reply is
/// not looked at: an error page is a reply like any other.
class HttpClient {
public:
  enum class CachePolicy {
    useProtocolCachePolicy,      ///< as the server's headers allow
    reloadIgnoringLocalCacheData ///< always from the server
  };

  struct Request {
    std::string url;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    Seconds timeoutInterval{60.0}; ///< without news of the server
  };

  /// Either the whole body or an error.
  struct DataReply {
    std::optional<std::string> data;
    std::optional<PlatformError> error;
  };

  /// Either a file that holds the whole body or an error. The file is taken away when the handler
  /// returns, unless it was moved elsewhere.
  struct DownloadReply {
    std::optional<std::string> file;
    std::optional<PlatformError> error;
  };

  using DataHandler = std::function<void(DataReply reply)>;
  using DownloadHandler = std::function<void(DownloadReply reply)>;

  virtual ~HttpClient() = default;

  /// Asks for `request` and calls `onReply` once, on any thread, never inside this call. A body of
  /// more than `largestBody` bytes is an error, noticed as soon as so much has come. Main thread
  /// only. What is under way when the client goes is dropped without a call.
  virtual void fetch(const Request& request, std::size_t largestBody, DataHandler onReply) = 0;

  /// Downloads `url` to a file, written as the bytes come. Otherwise as `fetch`, with the default
  /// cache policy and time-out.
  virtual void download(const std::string& url, DownloadHandler onReply) = 0;
};

} // namespace driftmark
