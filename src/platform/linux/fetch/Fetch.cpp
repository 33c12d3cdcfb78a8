// How a request is sent and checked.

#include "Fetch.h"

#include "platform/posix/files/FileItems.h"

#include <cstddef>
#include <cstdio>
#include <system_error>

#include <QByteArray>
#include <QCoreApplication>
#include <QMetaObject>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslError>
#include <QUrl>

#include <unistd.h>

namespace driftmark {

namespace {

/// How many bytes of a body are buffered when it arrives faster than it is read here.
constexpr qint64 bufferSize = qint64{256} * 1024;

QNetworkRequest requestFor(const FetchOptions& options, const QUrl& url) {
  QNetworkRequest result(url);
  result.setTransferTimeout(options.timeout);
  result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                      QNetworkRequest::NoLessSafeRedirectPolicy);
  result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  result.setRawHeader("Accept-Encoding", "identity");
  if (options.reload) {
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    result.setRawHeader("Cache-Control", "no-cache");
    result.setRawHeader("Pragma", "no-cache");
  }
  return result;
}

/// Trusts the CA certificates in the file that the environment names. Returns the reason when it
/// cannot; otherwise an empty text.
QString trustExtraCaCertificates(QNetworkRequest& request) {
  const QString name = qEnvironmentVariable("DRIFTMARK_EXTRA_CA_CERTIFICATES");
  if (name.isEmpty())
    return {};
  const auto certificates = QSslCertificate::fromPath(name, QSsl::Pem);
  if (certificates.isEmpty())
    return QString("There is no certificate in %1.").arg(name);
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

} // namespace

Fetch::Fetch(const FetchOptions& options) {
  QMetaObject::invokeMethod(
      this, [this, options] { send(options); }, Qt::QueuedConnection);
}

void Fetch::send(const FetchOptions& options) {
  const QUrl url(QString::fromStdString(options.url), QUrl::StrictMode);
  if (!url.isValid() || url.host().isEmpty())
    return fail("This is not the address of a server.");
  if (url.scheme() != "https")
    return fail("Only secure (https) addresses are supported.");
  QNetworkRequest request = requestFor(options, url);
  if (const QString reason = trustExtraCaCertificates(request); !reason.isEmpty())
    return fail(reason);

  reply_ = network_.get(request);
  reply_->setReadBufferSize(bufferSize);
  connect(reply_, &QNetworkReply::readyRead, this, &Fetch::writeWaiting);
  connect(reply_, &QNetworkReply::sslErrors, this, [this](const QList<QSslError>& errors) {
    certificateFault_ = errors.isEmpty() ? QString() : errors.first().errorString();
  });
  connect(reply_, &QNetworkReply::finished, this, &Fetch::finish);
}

void Fetch::writeWaiting() {
  while (!isOver_ && reply_->bytesAvailable() > 0) {
    const QByteArray bytes = reply_->read(bufferSize);
    if (bytes.isEmpty())
      return;
    written_ += bytes.size();
    const int error = writeAll(STDOUT_FILENO, {bytes.constData(), std::size_t(bytes.size())});
    if (error != 0)
      return fail(QString::fromStdString(std::generic_category().message(error)));
  }
}

void Fetch::finish() {
  writeWaiting();
  if (isOver_)
    return;
  if (const QString reason = fault(); !reason.isEmpty())
    return fail(reason);
  isOver_ = true;
  QCoreApplication::exit(0);
}

void Fetch::fail(const QString& reason) {
  isOver_ = true;
  std::fputs(qUtf8Printable(reason), stderr);
  QCoreApplication::exit(1);
}

/// Why the reply is incomplete; empty when it is complete.
QString Fetch::fault() const {
  if (!certificateFault_.isEmpty())
    return certificateFault_;
  const auto error = reply_->error();
  if (error == QNetworkReply::OperationCanceledError)
    return "The request timed out.";
  if (error != QNetworkReply::NoError && !isStatus(error))
    return reply_->errorString();
  const QVariant length = reply_->header(QNetworkRequest::ContentLengthHeader);
  return length.isValid() && length.toLongLong() > written_ ? "The network connection was lost."
                                                            : QString();
}

} // namespace driftmark
