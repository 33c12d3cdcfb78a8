#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark::test {

/// How a request is answered. The length of the body is announced, and the connection closed behind
/// it.
struct HttpsReply {
  using Header = std::pair<std::string, std::string>;

  int status = 200;
  std::vector<Header> headers{}; ///< beside those for the length and the connection
  std::string body{};
  std::uint64_t zeros = 0; ///< as many NUL bytes belong to the body, behind the text
  bool isEndless =
      false; ///< NUL bytes follow for as long as they are taken; no length is announced
  bool isChunked = false;                  ///< the body comes in chunks; no length is announced
  std::optional<std::uint64_t> cutAfter{}; ///< the connection is closed after so much of the body

  static HttpsReply redirect(const std::string& url, int status = 302) {
    return {.status = status, .headers = {{"Location", url}}};
  }
};

/// What a client asked for.
struct HttpsRequest {
  std::string method;
  std::string path;                        ///< with the query
  std::vector<HttpsReply::Header> headers; ///< the names in small letters

  /// The value of a header; empty when it was not sent.
  std::string header(const std::string& name) const;
};

/// An HTTPS server at a free port of this machine, on a thread of its own, with a certificate of
/// its own. What nothing is served at is answered with status 404 and a page for people. Any
/// thread; the waits block and return false when a generous deadline passes first.
class HttpsServer {
public:
  struct Options {
    std::string folder;                 ///< where the certificate is kept; a temporary one if empty
    std::string hostName = "localhost"; ///< whom the certificate speaks for
  };

  /// Throws std::runtime_error when the server cannot come up.
  HttpsServer() : HttpsServer(Options{}) {}
  explicit HttpsServer(const Options& options);
  HttpsServer(const HttpsServer&) = delete;
  HttpsServer& operator=(const HttpsServer&) = delete;

  /// Closes all connections.
  ~HttpsServer();

  std::uint16_t port() const;

  /// "https://localhost:PORT" and the path, which begins with a slash.
  std::string url(const std::string& path) const;

  /// The PEM file of the authority that vouches for this server.
  std::string certificateFile() const;

  /// Answers requests for `path` in this way from now on.
  void serve(const std::string& path, HttpsReply reply);

  /// Lets requests for `path` wait without an answer, until they are released.
  void hold(const std::string& path);
  void release(const std::string& path);

  /// What came so far, in its order.
  std::vector<HttpsRequest> requests() const;

  /// Waits until `path` was asked for so many times.
  bool awaitRequests(const std::string& path, std::size_t count) const;

  /// Waits until so many bytes of bodies at `path` have gone out in all.
  bool awaitSent(const std::string& path, std::uint64_t bytes) const;

  /// The bytes of bodies at `path` that have gone out so far.
  std::uint64_t sent(const std::string& path) const;

  /// Waits until no client is connected.
  bool awaitNoConnections() const;

private:
  class Impl;
  const std::unique_ptr<Impl> impl_;
};

} // namespace driftmark::test
