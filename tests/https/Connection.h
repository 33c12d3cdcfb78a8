#pragma once

#include "https/Script.h"

#include <QByteArray>
#include <QObject>
#include <QSslSocket>
#include <QTimer>

namespace driftmark::test {

/// One client of the server, from its request to the end of the reply. Lives on the server's thread
/// and deletes itself when the client disconnects.
class Connection final : public QObject {
public:
  /// Takes over the socket, whose parent it shares. The script outlives this object.
  Connection(QSslSocket* socket, Script& script);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() override;

  /// Answers the request unless its path is held.
  void answer();

private:
  void read();
  void writeMore();
  void writeByte();
  void write(const QByteArray& bytes);
  std::uint64_t left() const;
  std::uint64_t length() const;
  QByteArray piece(std::uint64_t limit) const;

  QSslSocket* const socket_;
  Script& script_;
  QByteArray received_;
  std::string path_; ///< empty until the request is complete
  HttpsReply reply_;
  bool isAnswering_ = false;
  bool isComplete_ = false;
  std::uint64_t written_ = 0; ///< of the body
  QTimer pause_;
};

} // namespace driftmark::test
