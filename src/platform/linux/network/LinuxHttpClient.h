#pragma once

#include "platform/posix/FileDescriptor.h"
#include "ports/FileSystem.h"
#include "ports/HttpClient.h"

#include <string>

#include <QObject>

namespace driftmark {

/// HTTPS by the program `driftmark-fetch`: each request is a process of its own, which ends with
/// the request, with this object, and with this process. Bodies are transferred uncompressed,
/// through a buffer of bounded size. Handlers are called on the main thread, from the event loop.
class LinuxHttpClient final : public HttpClient {
public:
  /// Downloads go to the temporary folder of `fileSystem`, readable by this user alone. `program`
  /// is the path of the program that fetches. It stays open: whatever happens to the path later,
  /// requests run the same program.
  LinuxHttpClient(FileSystem& fileSystem, const std::string& program);

  void fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) override;
  void download(const std::string& url, DownloadHandler onReply) override;

private:
  FileSystem& fileSystem_;
  const FileDescriptor program_;
  QObject transfers_; ///< the parent of the running ones
};

} // namespace driftmark
