// How a request is sent and checked, and where the body of its reply goes.

#include "platform/linux/network/LinuxHttpClient.h"

#include "platform/posix/PosixAdapters.h"
#include "platform/posix/files/FileItems.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <QByteArray>
#include <QFile>
#include <QMetaObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslError>
#include <QString>
#include <QTemporaryFile>
#include <QTimer>
#include <QUrl>

namespace driftmark {

namespace {

/// How many bytes of a body are buffered when it arrives faster than it is processed.
constexpr qint64 bufferSize = qint64{256} * 1024;

constexpr const char* timedOut = "The request timed out.";

int milliseconds(Seconds duration) {
  constexpr auto max = static_cast<double>(std::numeric_limits<int>::max());
  return static_cast<int>(
      std::clamp(std::chrono::duration<double, std::milli>(duration).count(), 1.0, max));
}

QNetworkRequest requestFor(const HttpClient::Request& request, const QUrl& url) {
  QNetworkRequest result(url);
  result.setTransferTimeout(milliseconds(request.timeoutInterval));
  result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                      QNetworkRequest::NoLessSafeRedirectPolicy);
  result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  result.setRawHeader("Accept-Encoding", "identity");
  if (request.cachePolicy == HttpClient::CachePolicy::reloadIgnoringLocalCacheData) {
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    result.setRawHeader("Cache-Control", "no-cache");
    result.setRawHeader("Pragma", "no-cache");
  }
  return result;
}

/// Trusts the CA certificates in the file that the environment names. Returns the reason when it
/// cannot; otherwise an empty text.
QString trustExtraCaCertificates(QNetworkRequest& request) {
  const auto name = PosixEnvironment().variable(LinuxHttpClient::extraCaCertificatesVariable);
  if (!name || name->empty())
    return {};
  const auto certificates = QSslCertificate::fromPath(QString::fromStdString(*name), QSsl::Pem);
  if (certificates.isEmpty())
    return QString("There is no certificate in %1.").arg(QString::fromStdString(*name));
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setCaCertificates(QSslConfiguration::systemCaCertificates() + certificates);
  request.setSslConfiguration(configuration);
  return {};
}

/// Whether the error only stands for the HTTP status of a complete reply.
bool isStatus(QNetworkReply::NetworkError error) {
  switch (error) {
  case QNetworkReply::ContentAccessDenied:
  case QNetworkReply::ContentOperationNotPermittedError:
  case QNetworkReply::ContentNotFoundError:
  case QNetworkReply::AuthenticationRequiredError:
  case QNetworkReply::ContentConflictError:
  case QNetworkReply::ContentGoneError:
  case QNetworkReply::UnknownContentError:
  case QNetworkReply::ProtocolInvalidOperationError:
  case QNetworkReply::InternalServerError:
  case QNetworkReply::OperationNotImplementedError:
  case QNetworkReply::ServiceUnavailableError:
  case QNetworkReply::UnknownServerError:
    return true;
  default:
    return false;
  }
}

/// One running request. Deletes itself at its end. Deleting it earlier drops the request without a
/// callback. Main thread only.
class HttpTransfer final : public QObject {
public:
  /// The receiver of the reply's body.
  class Body {
  public:
    virtual ~Body() = default;

    /// Receives the next bytes. Returns the reason when it cannot; otherwise an empty text.
    virtual QString receive(const QByteArray& bytes) = 0;

    /// Called once, from the event loop, when the body is complete or has failed. `error` is empty
    /// for a complete body.
    virtual void finish(const QString& error) = 0;
  };

  /// Sends `request`. `owner` becomes the parent of the transfer.
  static void start(const HttpClient::Request& request, std::unique_ptr<Body> body, QObject& owner);

private:
  HttpTransfer(std::unique_ptr<Body> body, QObject& owner);

  void send(const HttpClient::Request& request);
  void end(const QString& fault);
  void abort(const QString& fault);
  void receiveWaiting();
  void finish();
  QString fault() const;

  std::unique_ptr<Body> body_; ///< null once the transfer has ended
  QNetworkAccessManager network_;
  QNetworkReply* reply_ = nullptr; ///< a child of `network_`
  qint64 received_ = 0;
  QString certificateFault_;
};

void HttpTransfer::start(const HttpClient::Request& request, std::unique_ptr<Body> body,
                         QObject& owner) {
  // Deleted by its parent, or by itself at its end.
  (new HttpTransfer(std::move(body), owner))->send(request);
}

HttpTransfer::HttpTransfer(std::unique_ptr<Body> body, QObject& owner)
    : QObject(&owner), body_(std::move(body)) {}

void HttpTransfer::send(const HttpClient::Request& request) {
  const QUrl url(QString::fromStdString(request.url), QUrl::StrictMode);
  if (!url.isValid() || url.host().isEmpty())
    return end("This is not the address of a server.");
  if (url.scheme() != "https")
    return end("Only secure (https) addresses are supported.");
  QNetworkRequest networkRequest = requestFor(request, url);
  if (const QString fault = trustExtraCaCertificates(networkRequest); !fault.isEmpty())
    return end(fault);

  reply_ = network_.get(networkRequest);
  reply_->setReadBufferSize(bufferSize);
  connect(reply_, &QNetworkReply::readyRead, this, &HttpTransfer::receiveWaiting);
  connect(reply_, &QNetworkReply::sslErrors, this, [this](const QList<QSslError>& errors) {
    certificateFault_ = errors.isEmpty() ? QString() : errors.first().errorString();
  });
  connect(reply_, &QNetworkReply::finished, this, &HttpTransfer::finish);
  if (request.maxDuration)
    QTimer::singleShot(milliseconds(*request.maxDuration), this, [this] {
      if (body_)
        abort(timedOut);
    });
}

/// Ends the transfer. The body is notified from the event loop; that may delete this object.
void HttpTransfer::end(const QString& fault) {
  QMetaObject::invokeMethod(
      this,
      [this, fault, body = std::shared_ptr(std::move(body_))] {
        deleteLater();
        body->finish(fault);
      },
      Qt::QueuedConnection);
}

/// Ends the transfer before its reply is complete.
void HttpTransfer::abort(const QString& fault) {
  end(fault);
  reply_->abort();
}

void HttpTransfer::receiveWaiting() {
  while (body_ && reply_->bytesAvailable() > 0) {
    const QByteArray bytes = reply_->read(bufferSize);
    if (bytes.isEmpty())
      return;
    received_ += bytes.size();
    if (const QString fault = body_->receive(bytes); !fault.isEmpty())
      return abort(fault);
  }
}

void HttpTransfer::finish() {
  receiveWaiting();
  if (body_)
    end(fault());
}

/// Why the reply is incomplete; empty when it is complete.
QString HttpTransfer::fault() const {
  if (!certificateFault_.isEmpty())
    return certificateFault_;
  const auto error = reply_->error();
  if (error == QNetworkReply::OperationCanceledError)
    return timedOut;
  if (error != QNetworkReply::NoError && !isStatus(error))
    return reply_->errorString();
  const QVariant length = reply_->header(QNetworkRequest::ContentLengthHeader);
  return length.isValid() && length.toLongLong() > received_ ? "The network connection was lost."
                                                             : QString();
}

/// A body in memory, up to a limit.
class BodyInMemory final : public HttpTransfer::Body {
public:
  BodyInMemory(std::size_t maxSize, HttpClient::FetchHandler onReply)
      : maxSize_(maxSize), onReply_(std::move(onReply)) {}

  QString receive(const QByteArray& bytes) override {
    if (static_cast<std::size_t>(bytes.size()) > maxSize_ - data_.size())
      return "The server sent more than was expected.";
    data_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return {};
  }

  void finish(const QString& error) override {
    if (error.isEmpty())
      onReply_(HttpClient::Body{std::move(data_)});
    else
      onReply_(PlatformError{error.toStdString()});
  }

private:
  const std::size_t maxSize_;
  const HttpClient::FetchHandler onReply_;
  std::string data_;
};

/// A body in a file, which is removed with this object unless it was moved elsewhere. Where the
/// file system supports it, the file has no name until it is complete, so that even an abrupt end
/// of this process leaves no part of it behind.
class BodyInFile final : public HttpTransfer::Body {
public:
  BodyInFile(const std::string& folder, HttpClient::DownloadHandler onReply)
      : onReply_(std::move(onReply)),
        file_(QFile::decodeName((folder + "download-XXXXXX").c_str())) {}

  QString receive(const QByteArray& bytes) override {
    if (!isOpen())
      return file_.errorString();
    // Not by QFile: it ends a short write without a reason.
    const int error = writeAll(file_.handle(), {bytes.constData(), std::size_t(bytes.size())});
    return error == 0 ? QString() : QString::fromStdString(std::generic_category().message(error));
  }

  void finish(const QString& error) override {
    if (!error.isEmpty())
      fail(error);
    else if (!isOpen())
      fail(file_.errorString());
    else
      onReply_(HttpClient::File{QFile::encodeName(file_.fileName()).toStdString()});
  }

private:
  bool isOpen() { return file_.isOpen() || file_.open(); }

  void fail(const QString& error) { onReply_(PlatformError{error.toStdString()}); }

  const HttpClient::DownloadHandler onReply_;
  QTemporaryFile file_;
};

} // namespace

void LinuxHttpClient::fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) {
  HttpTransfer::start(request, std::make_unique<BodyInMemory>(maxBodySize, std::move(onReply)),
                      transfers_);
}

void LinuxHttpClient::download(const std::string& url, DownloadHandler onReply) {
  const auto folder = fileSystem_.temporaryDirectory();
  if (const auto* const error = std::get_if<PlatformError>(&folder)) {
    QMetaObject::invokeMethod(
        &transfers_, [onReply = std::move(onReply), error = *error] { onReply(error); },
        Qt::QueuedConnection);
    return;
  }
  HttpTransfer::start(
      {.url = url}, std::make_unique<BodyInFile>(std::get<std::string>(folder), std::move(onReply)),
      transfers_);
}

} // namespace driftmark
