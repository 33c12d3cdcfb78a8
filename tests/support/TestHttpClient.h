#pragma once

#include "ports/HttpClient.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// A client that keeps what is asked for until the test replies. Handlers are called in the call of
/// `reply…`, on the thread of that call.
class TestHttpClient final : public HttpClient {
public:
  struct Fetch {
    Request request;
    std::size_t largestBody;
  };

  void fetch(const Request& request, std::size_t largestBody, DataHandler onReply) override {
    fetches_.push_back({request, largestBody});
    waitingFetches_.push_back(std::move(onReply));
  }

  void download(const std::string& url, DownloadHandler onReply) override {
    downloads_.push_back(url);
    waitingDownloads_.push_back(std::move(onReply));
  }

  /// All requests so far, the oldest first.
  const std::vector<Fetch>& fetches() const { return fetches_; }
  const std::vector<std::string>& downloads() const { return downloads_; }

  /// Replies to the oldest request that waits. There must be one.
  void reply(std::string data) { replyTo(waitingFetches_, DataReply{std::move(data), {}}); }
  void fail(PlatformError error) { replyTo(waitingFetches_, DataReply{{}, std::move(error)}); }
  void replyNothing() { replyTo(waitingFetches_, DataReply{}); }
  void replyFile(std::string file) {
    replyTo(waitingDownloads_, DownloadReply{std::move(file), {}});
  }
  void failDownload(PlatformError error) {
    replyTo(waitingDownloads_, DownloadReply{{}, std::move(error)});
  }
  void replyNoFile() { replyTo(waitingDownloads_, DownloadReply{}); }

  /// How many requests wait for a reply.
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
  std::deque<DataHandler> waitingFetches_;
  std::deque<DownloadHandler> waitingDownloads_;
};

} // namespace driftmark::test
