#pragma once

#include "ports/FileSystem.h"
#include "ports/HttpClient.h"

#include <QObject>

namespace driftmark {

/// HTTPS by Qt's network module. Each request has connections of its own and leaves no state
/// behind. Bodies are transferred uncompressed, through a buffer of bounded size. Handlers are
/// called on the main thread, from the event loop.
class LinuxHttpClient final : public HttpClient {
public:
  /// The environment variable that may name a PEM file with CA certificates to trust beside those
  /// of the system. It is read for each request. A file without certificates makes the request
  /// fail.
  static constexpr const char* extraCaCertificatesVariable = "DRIFTMARK_EXTRA_CA_CERTIFICATES";

  /// Downloads go to the temporary folder of `fileSystem`, readable by this user alone.
  explicit LinuxHttpClient(FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  void fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) override;
  void download(const std::string& url, DownloadHandler onReply) override;

private:
  FileSystem& fileSystem_;
  QObject transfers_; ///< the parent of the running ones
};

} // namespace driftmark
