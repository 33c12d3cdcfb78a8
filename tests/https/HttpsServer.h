#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// How a request is answered. The reply states the length of the body, and the connection is closed
/// after it.
struct HttpsReply {
  using Header = std::pair<std::string, std::string>;

  int status = 200;
  std::vector<Header> headers{}; ///< besides those for the length and the connection
  std::string body{};
  std::uint64_t zeros = 0; ///< so many NUL bytes follow the text in the body
  bool isEndless = false;  ///< NUL bytes follow as long as the client reads; no length is stated
  bool isChunked = false;  ///< the body is sent in chunks; no length is stated
  bool hasEndlessHeaders = false;          ///< headers follow instead of a body
  std::optional<std::uint64_t> cutAfter{}; ///< the connection is closed after so much of the body
  std::chrono::milliseconds pause{};       ///< if any, each byte of the body is sent after a pause

  static HttpsReply redirect(const std::string& url, int status = 302) {
    return {.status = status, .headers = {{"Location", url}}};
  }
};

/// A request from a client.
struct HttpsRequest {
  std::string method;
  std::string path;                        ///< with the query
  std::vector<HttpsReply::Header> headers; ///< the names in lower case

  /// The value of a header; empty when it was not sent.
  std::string header(const std::string& name) const;
};

/// An HTTPS server on a free local port, with a thread and a certificate of its own. A path without
/// a scripted reply gets status 404 and an HTML page. Any thread. The waits block; they return
/// false when `maxWait` is over.
class HttpsServer {
public:
  struct Options {
    std::string folder;                 ///< where the certificate is kept; a temporary one if empty
    std::string hostName = "localhost"; ///< the host in the certificate
  };

  /// Throws std::runtime_error when the server cannot listen.
  HttpsServer() : HttpsServer(Options{}) {}
  explicit HttpsServer(const Options& options);
  HttpsServer(const HttpsServer&) = delete;
  HttpsServer& operator=(const HttpsServer&) = delete;

  /// Closes all connections.
  ~HttpsServer();

  std::uint16_t port() const;

  /// "https://localhost:PORT" and the path, which begins with a slash.
  std::string url(const std::string& path) const;

  /// The PEM file with the CA certificate of this server.
  std::string certificateFile() const;

  /// Answers requests for `path` with this reply from now on.
  void serve(const std::string& path, HttpsReply reply);

  /// Leaves requests for `path` without an answer until they are released.
  void hold(const std::string& path);
  void release(const std::string& path);

  /// The requests so far, in order.
  std::vector<HttpsRequest> requests() const;

  /// Waits until `path` was requested so many times.
  bool awaitRequests(const std::string& path, std::size_t count) const;

  /// Waits until so many bytes of bodies at `path` have been sent in all.
  bool awaitSent(const std::string& path, std::uint64_t bytes) const;

  /// The bytes of bodies at `path` that have been sent so far.
  std::uint64_t sent(const std::string& path) const;

  /// Waits until no client is connected.
  bool awaitNoConnections() const;

private:
  class Impl;
  const std::unique_ptr<Impl> impl_;
};

} // namespace driftmark::test
