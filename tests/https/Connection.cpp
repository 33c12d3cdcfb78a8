// How the server reads one request and writes the scripted reply.

#include "https/Connection.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace driftmark::test {

namespace {

constexpr qint64 maxWaiting = qint64{256} * 1024;
constexpr std::uint64_t maxPiece = std::uint64_t{64} * 1024;

HttpsRequest parse(const QByteArray& text) {
  HttpsRequest request;
  const QList<QByteArray> lines = text.split('\n');
  const QList<QByteArray> words = lines.first().trimmed().split(' ');
  request.method = words.value(0).toStdString();
  request.path = words.value(1).toStdString();
  for (const QByteArray& line : lines.mid(1)) {
    const qsizetype colon = line.indexOf(':');
    if (colon > 0)
      request.headers.emplace_back(line.left(colon).trimmed().toLower().toStdString(),
                                   line.mid(colon + 1).trimmed().toStdString());
  }
  return request;
}

QByteArray head(const HttpsReply& reply, std::uint64_t length) {
  QByteArray text = "HTTP/1.1 " + QByteArray::number(reply.status) + " Scripted\r\n";
  for (const auto& [name, value] : reply.headers)
    text += QByteArray::fromStdString(name) + ": " + QByteArray::fromStdString(value) + "\r\n";
  if (reply.hasEndlessHeaders)
    return text;
  if (reply.isChunked)
    text += "Transfer-Encoding: chunked\r\n";
  else if (!reply.isEndless)
    text += "Content-Length: " + QByteArray::number(static_cast<qulonglong>(length)) + "\r\n";
  return text + "Connection: close\r\n\r\n";
}

} // namespace

Connection::Connection(QSslSocket* socket, Script& script)
    : QObject(socket->parent()), socket_(socket), script_(script) {
  script_.noteConnections(1);
  socket_->setParent(this);
  connect(socket_, &QSslSocket::readyRead, this, &Connection::read);
  connect(socket_, &QSslSocket::encryptedBytesWritten, this, &Connection::writeMore);
  connect(socket_, &QSslSocket::disconnected, this, &QObject::deleteLater);
  pause_.setSingleShot(true);
  connect(&pause_, &QTimer::timeout, this, &Connection::writeByte);
  read();
}

Connection::~Connection() {
  socket_->disconnect(this);
  script_.noteConnections(-1);
}

void Connection::read() {
  received_ += socket_->readAll();
  const qsizetype end = received_.indexOf("\r\n\r\n");
  if (end < 0 || !path_.empty())
    return;
  HttpsRequest request = parse(received_.left(end));
  path_ = request.path;
  script_.noteRequest(std::move(request));
  answer();
}

void Connection::answer() {
  if (path_.empty() || isAnswering_ || script_.isHeld(path_))
    return;
  isAnswering_ = true;
  reply_ = script_.reply(path_);
  socket_->write(head(reply_, length()));
  writeMore();
}

std::uint64_t Connection::length() const {
  return reply_.body.size() + reply_.zeros;
}

/// The bytes of the body that are not written yet.
std::uint64_t Connection::left() const {
  if (reply_.cutAfter)
    return *reply_.cutAfter - std::min(*reply_.cutAfter, written_);
  return reply_.isEndless || reply_.hasEndlessHeaders ? std::numeric_limits<std::uint64_t>::max()
                                                      : length() - written_;
}

void Connection::writeMore() {
  if (!isAnswering_ || isComplete_)
    return;
  if (reply_.pause.count() > 0 && left() > 0)
    return pause_.start(reply_.pause);
  while (left() > 0 && socket_->bytesToWrite() + socket_->encryptedBytesToWrite() < maxWaiting)
    write(piece(std::min(left(), maxPiece)));
  if (left() > 0)
    return;
  isComplete_ = true;
  if (reply_.isChunked && !reply_.cutAfter)
    socket_->write("0\r\n\r\n");
  socket_->disconnectFromHost();
}

/// When it is on its way, `writeMore` begins the next pause.
void Connection::writeByte() {
  write(piece(1));
}

/// The next bytes of the body, at least one.
QByteArray Connection::piece(std::uint64_t limit) const {
  if (reply_.hasEndlessHeaders)
    return "X-Filler: " + QByteArray(static_cast<qsizetype>(limit), 'x') + "\r\n";
  if (written_ >= reply_.body.size())
    return {static_cast<qsizetype>(limit), '\0'};
  return QByteArray::fromStdString(reply_.body.substr(written_, limit));
}

void Connection::write(const QByteArray& bytes) {
  if (reply_.isChunked)
    socket_->write(QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n");
  else
    socket_->write(bytes);
  written_ += static_cast<std::uint64_t>(bytes.size());
  script_.noteSent(path_, static_cast<std::uint64_t>(bytes.size()));
}

} // namespace driftmark::test
