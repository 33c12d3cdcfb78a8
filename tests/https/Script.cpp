// What the server answers and what it has received.

#include "https/Script.h"

#include "harness/Waiting.h"

#include <algorithm>
#include <utility>

namespace driftmark::test {

std::string HttpsRequest::header(const std::string& name) const {
  const auto found = std::find_if(headers.begin(), headers.end(),
                                  [&](const auto& each) { return each.first == name; });
  return found == headers.end() ? "" : found->second;
}

void Script::serve(const std::string& path, HttpsReply reply) {
  const std::lock_guard lock(mutex_);
  replies_[path] = std::move(reply);
}

void Script::hold(const std::string& path) {
  const std::lock_guard lock(mutex_);
  held_.insert(path);
}

void Script::release(const std::string& path) {
  const std::lock_guard lock(mutex_);
  held_.erase(path);
}

HttpsReply Script::reply(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = replies_.find(path);
  if (found != replies_.end())
    return found->second;
  return {.status = 404,
          .headers = {{"Content-Type", "text/html"}},
          .body = "<html><body><h1>Not Found</h1></body></html>\n"};
}

bool Script::isHeld(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  return held_.contains(path);
}

void Script::noteRequest(HttpsRequest request) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(std::move(request));
  changed_.notify_all();
}

void Script::noteSent(const std::string& path, std::uint64_t bytes) {
  const std::lock_guard lock(mutex_);
  sent_[path] += bytes;
  changed_.notify_all();
}

void Script::noteConnections(int change) {
  const std::lock_guard lock(mutex_);
  connections_ += change;
  changed_.notify_all();
}

std::vector<HttpsRequest> Script::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

std::uint64_t Script::sent(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  return sentAt(path);
}

std::uint64_t Script::sentAt(const std::string& path) const {
  const auto found = sent_.find(path);
  return found == sent_.end() ? 0 : found->second;
}

bool Script::awaitRequests(const std::string& path, std::size_t count) const {
  return await([&] {
    const auto matches = [&](const HttpsRequest& request) { return request.path == path; };
    return static_cast<std::size_t>(std::count_if(requests_.begin(), requests_.end(), matches)) >=
           count;
  });
}

bool Script::awaitSent(const std::string& path, std::uint64_t bytes) const {
  return await([&] { return sentAt(path) >= bytes; });
}

bool Script::awaitNoConnections() const {
  return await([&] { return connections_ == 0; });
}

bool Script::await(const std::function<bool()>& done) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, maxWait, done);
}

} // namespace driftmark::test
