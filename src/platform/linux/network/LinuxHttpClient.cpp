#include "platform/linux/network/LinuxHttpClient.h"

#include "platform/linux/network/HttpTransfer.h"

#include <memory>
#include <utility>

#include <QFile>
#include <QTemporaryFile>

namespace driftmark {

namespace {

/// A body that is kept in memory, up to a limit.
class BodyInMemory final : public HttpTransfer::Body {
public:
  BodyInMemory(std::size_t largest, HttpClient::DataHandler onReply)
      : largest_(largest), onReply_(std::move(onReply)) {}

  QString take(const QByteArray& bytes) override {
    if (static_cast<std::size_t>(bytes.size()) > largest_ - data_.size())
      return "The server sent more than was expected.";
    data_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return {};
  }

  void finish(const QString& error) override {
    if (error.isEmpty())
      onReply_({.data = std::move(data_), .error = std::nullopt});
    else
      onReply_({.data = std::nullopt, .error = PlatformError{error.toStdString()}});
  }

private:
  const std::size_t largest_;
  const HttpClient::DataHandler onReply_;
  std::string data_;
};

/// A body that goes to a file, which is removed with this object unless it was moved elsewhere. The
/// file gets its name when it is whole, where the file system can do that, so that not even an
/// abrupt end of this process leaves a part of it behind.
class BodyInFile final : public HttpTransfer::Body {
public:
  BodyInFile(const std::string& folder, HttpClient::DownloadHandler onReply)
      : onReply_(std::move(onReply)),
        file_(QFile::decodeName((folder + "download-XXXXXX").c_str())) {}

  QString take(const QByteArray& bytes) override {
    const bool written = isOpen() && file_.write(bytes) == bytes.size() && file_.flush();
    return written ? QString() : file_.errorString();
  }

  void finish(const QString& error) override {
    if (!error.isEmpty())
      fail(error);
    else if (!isOpen())
      fail(file_.errorString());
    else
      onReply_({.file = QFile::encodeName(file_.fileName()).toStdString(), .error = std::nullopt});
  }

private:
  bool isOpen() { return file_.isOpen() || file_.open(); }

  void fail(const QString& error) {
    onReply_({.file = std::nullopt, .error = PlatformError{error.toStdString()}});
  }

  const HttpClient::DownloadHandler onReply_;
  QTemporaryFile file_;
};

} // namespace

void LinuxHttpClient::fetch(const Request& request, std::size_t largestBody, DataHandler onReply) {
  HttpTransfer::start(request, std::make_unique<BodyInMemory>(largestBody, std::move(onReply)),
                      transfers_);
}

void LinuxHttpClient::download(const std::string& url, DownloadHandler onReply) {
  HttpTransfer::start(
      {.url = url},
      std::make_unique<BodyInFile>(fileSystem_.temporaryDirectory(), std::move(onReply)),
      transfers_);
}

} // namespace driftmark
