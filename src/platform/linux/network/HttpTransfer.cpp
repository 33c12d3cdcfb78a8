#include "platform/linux/network/HttpTransfer.h"

#include "platform/linux/network/LinuxHttpClient.h"
#include "platform/posix/PosixAdapters.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include <QMetaObject>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslError>
#include <QUrl>

namespace driftmark {

namespace {

/// What waits in memory of a body that comes faster than it is taken.
constexpr qint64 bufferSize = qint64{256} * 1024;

int milliseconds(Seconds duration) {
  constexpr auto longest = static_cast<double>(std::numeric_limits<int>::max());
  return static_cast<int>(
      std::clamp(std::chrono::duration<double, std::milli>(duration).count(), 1.0, longest));
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

/// Trusts the authorities of the file that the environment names; says why it cannot.
QString trustExtraCaCertificates(QNetworkRequest& request) {
  const auto name = PosixEnvironment().variable(LinuxHttpClient::extraCaCertificatesVariable);
  if (!name || name->empty())
    return {};
  const auto authorities = QSslCertificate::fromPath(QString::fromStdString(*name), QSsl::Pem);
  if (authorities.isEmpty())
    return QString("There is no certificate in %1.").arg(QString::fromStdString(*name));
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setCaCertificates(QSslConfiguration::systemCaCertificates() + authorities);
  request.setSslConfiguration(configuration);
  return {};
}

/// Whether the error only tells what the status of a complete reply is.
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

} // namespace

void HttpTransfer::start(const HttpClient::Request& request, std::unique_ptr<Body> body,
                         QObject& owner) {
  // Its owner is the parent, or it goes by itself when it is over.
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
  connect(reply_, &QNetworkReply::readyRead, this, &HttpTransfer::takeWaiting);
  connect(reply_, &QNetworkReply::sslErrors, this, [this](const QList<QSslError>& errors) {
    certificateFault_ = errors.isEmpty() ? QString() : errors.first().errorString();
  });
  connect(reply_, &QNetworkReply::finished, this, &HttpTransfer::finish);
}

/// Lets the transfer be over. The body is told from the event loop; telling it may end this object.
void HttpTransfer::end(const QString& fault) {
  QMetaObject::invokeMethod(
      this,
      [this, fault, body = std::shared_ptr(std::move(body_))] {
        deleteLater();
        body->finish(fault);
      },
      Qt::QueuedConnection);
}

void HttpTransfer::takeWaiting() {
  while (body_ && reply_->bytesAvailable() > 0) {
    const QByteArray bytes = reply_->read(bufferSize);
    if (bytes.isEmpty())
      return;
    taken_ += bytes.size();
    if (const QString fault = body_->take(bytes); !fault.isEmpty()) {
      end(fault);
      return reply_->abort();
    }
  }
}

void HttpTransfer::finish() {
  takeWaiting();
  if (body_)
    end(fault());
}

/// Why the reply is not whole; empty when it is.
QString HttpTransfer::fault() const {
  if (!certificateFault_.isEmpty())
    return certificateFault_;
  const auto error = reply_->error();
  if (error == QNetworkReply::OperationCanceledError)
    return "The request timed out.";
  if (error != QNetworkReply::NoError && !isStatus(error))
    return reply_->errorString();
  const QVariant length = reply_->header(QNetworkRequest::ContentLengthHeader);
  return length.isValid() && length.toLongLong() > taken_ ? "The network connection was lost."
                                                          : QString();
}

} // namespace driftmark
