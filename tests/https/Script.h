#pragma once

#include "https/HttpsServer.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace driftmark::test {

/// What the server answers, and what it has received. Any thread.
class Script {
public:
  void serve(const std::string& path, HttpsReply reply);
  void hold(const std::string& path);
  void release(const std::string& path);

  HttpsReply reply(const std::string& path) const;
  bool isHeld(const std::string& path) const;

  void noteRequest(HttpsRequest request);
  void noteSent(const std::string& path, std::uint64_t bytes);
  void noteConnections(int change);

  std::vector<HttpsRequest> requests() const;
  std::uint64_t sent(const std::string& path) const;
  bool awaitRequests(const std::string& path, std::size_t count) const;
  bool awaitSent(const std::string& path, std::uint64_t bytes) const;
  bool awaitNoConnections() const;

private:
  std::uint64_t sentAt(const std::string& path) const;
  bool await(const std::function<bool()>& done) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::map<std::string, HttpsReply> replies_;
  std::set<std::string> held_;
  std::vector<HttpsRequest> requests_;
  std::map<std::string, std::uint64_t> sent_;
  int connections_ = 0;
};

} // namespace driftmark::test
