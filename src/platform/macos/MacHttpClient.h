#pragma once

#include "ports/HttpClient.h"

#include <memory>
#include <mutex>

namespace driftmark {

/// HTTPS by the system's URL loading, with its cache, proxies and timeouts. Each request has its
/// own session and leaves no connection open. Handlers are called on the system's threads; the
/// destructor waits for a running one, and no handler is called after it.
class MacHttpClient final : public HttpClient {
public:
  MacHttpClient() = default;
  MacHttpClient(const MacHttpClient&) = delete;
  MacHttpClient& operator=(const MacHttpClient&) = delete;
  ~MacHttpClient() override;

  void fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) override;
  void download(const std::string& url, DownloadHandler onReply) override;

private:
  /// Lets handlers run, one at a time, while the client exists.
  struct Gate {
    std::mutex mutex;
    bool isOpen = true;
  };

  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

} // namespace driftmark
