#pragma once

#include "ports/HttpClient.h"

#include <memory>

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QString>

namespace driftmark {

/// One request under way. Deletes itself when it is over; deleted before, it is dropped without a
/// call. Main thread only.
class HttpTransfer final : public QObject {
public:
  /// Where the body of the reply goes.
  class Body {
  public:
    virtual ~Body() = default;

    /// Takes the next bytes; says why it cannot.
    virtual QString take(const QByteArray& bytes) = 0;

    /// Called once, from the event loop: the body is whole, or there is an error.
    virtual void finish(const QString& error) = 0;
  };

  /// Sends `request`. The transfer belongs to `owner`.
  static void start(const HttpClient::Request& request, std::unique_ptr<Body> body, QObject& owner);

private:
  HttpTransfer(std::unique_ptr<Body> body, QObject& owner);

  void send(const HttpClient::Request& request);
  void end(const QString& fault);
  void takeWaiting();
  void finish();
  QString fault() const;

  std::unique_ptr<Body> body_; ///< null once the transfer is over
  QNetworkAccessManager network_;
  QNetworkReply* reply_ = nullptr; ///< a child of `network_`
  qint64 taken_ = 0;
  QString certificateFault_;
};

} // namespace driftmark
