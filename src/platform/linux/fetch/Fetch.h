#pragma once

#include "FetchOptions.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QString>

class QNetworkReply;

namespace driftmark {

/// Fetches a URL to standard output, then ends the event loop: with status 0 when the reply was
/// complete, else with 1 and the reason on standard error. No more than a buffer is read ahead of
/// whoever reads standard output. The variable DRIFTMARK_EXTRA_CA_CERTIFICATES may name a PEM file
/// with CA certificates to trust beside those of the system; a file without any is a failure.
class Fetch final : public QObject {
public:
  /// Begins once the event loop runs.
  explicit Fetch(const FetchOptions& options);

private:
  void send(const FetchOptions& options);
  void writeWaiting();
  void finish();
  void fail(const QString& reason);
  QString fault() const;

  QNetworkAccessManager network_;
  QNetworkReply* reply_ = nullptr; ///< a child of `network_`
  qint64 written_ = 0;
  QString certificateFault_;
  bool isOver_ = false;
};

} // namespace driftmark
