#pragma once

#include "ports/HttpClient.h"

#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// A client that keeps requests until the test replies. Handlers are called inside the call of
/// `reply…`, on the thread of that call.
class TestHttpClient final : public HttpClient {
public:
  struct Fetch {
    Request request;
    std::size_t maxBodySize;
  };

  void fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) override {
    fetches_.push_back({request, maxBodySize});
    waitingFetches_.push_back(std::move(onReply));
  }

  void download(const std::string& url, DownloadHandler onReply) override {
    downloads_.push_back(url);
    waitingDownloads_.push_back(std::move(onReply));
  }

  /// All requests so far, oldest first.
  const std::vector<Fetch>& fetches() const { return fetches_; }
  const std::vector<std::string>& downloads() const { return downloads_; }

  /// Replies to the oldest pending request. There must be one.
  void reply(std::string bytes) {
    if (fetchFailure_)
      fail(*fetchFailure_);
    else
      replyTo(waitingFetches_, Body{std::move(bytes)});
  }
  void fail(PlatformError error) { replyTo(waitingFetches_, std::move(error)); }
  void replyFile(std::string path) {
    if (downloadFailure_)
      failDownload(*downloadFailure_);
    else
      replyTo(waitingDownloads_, File{std::move(path)});
  }
  void failDownload(PlatformError error) { replyTo(waitingDownloads_, std::move(error)); }

  /// Makes every request of the kind fail, whatever the reply.
  void failFetches(PlatformError error) { fetchFailure_ = std::move(error); }
  void failDownloads(PlatformError error) { downloadFailure_ = std::move(error); }

  /// The number of pending requests.
  std::size_t waiting() const { return waitingFetches_.size() + waitingDownloads_.size(); }

private:
  template <class Handler, class Reply>
  static void replyTo(std::deque<Handler>& waiting, Reply reply) {
    const Handler handler = std::move(waiting.at(0));
    waiting.pop_front();
    handler(std::move(reply));
  }

  std::vector<Fetch> fetches_;
  std::vector<std::string> downloads_;
  std::optional<PlatformError> fetchFailure_;
  std::optional<PlatformError> downloadFailure_;
  std::deque<FetchHandler> waitingFetches_;
  std::deque<DownloadHandler> waitingDownloads_;
};

} // namespace driftmark::test
