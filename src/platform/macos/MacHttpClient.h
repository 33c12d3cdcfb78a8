#pragma once

#include "ports/HttpClient.h"

#include <memory>
#include <mutex>

namespace driftmark {

/// HTTPS by the system's URL loading, with its cache, proxies and time-outs. Each request has a
/// session of its own, of which no connection is left behind. Handlers are called on the system's
/// threads; the destructor waits for one that runs.
class MacHttpClient final : public HttpClient {
public:
  MacHttpClient() = default;
  MacHttpClient(const MacHttpClient&) = delete;
  MacHttpClient& operator=(const MacHttpClient&) = delete;
  ~MacHttpClient() override;

  void fetch(const Request& request, std::size_t largestBody, DataHandler onReply) override;
  void download(const std::string& url, DownloadHandler onReply) override;

private:
  /// Lets the handlers pass, one at a time, as long as the client lives.
  struct Gate {
    std::mutex mutex;
    bool isOpen = true;
  };

  const std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
};

} // namespace driftmark
