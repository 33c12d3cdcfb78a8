// How the server runs on a thread of its own.

#include "https/HttpsServer.h"

#include "https/Certificate.h"
#include "https/Connection.h"
#include "https/Script.h"

#include <stdexcept>

#include <QFile>
#include <QMetaObject>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>
#include <QThread>

namespace driftmark::test {

namespace {

QByteArray contentsOf(const std::string& path) {
  QFile file(QString::fromStdString(path));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QSslConfiguration configuration(const Certificate& certificate) {
  QSslConfiguration result = QSslConfiguration::defaultConfiguration();
  result.setLocalCertificate(QSslCertificate(contentsOf(certificate.certificateFile)));
  result.setPrivateKey(QSslKey(contentsOf(certificate.keyFile), QSsl::Ec));
  return result;
}

} // namespace

class HttpsServer::Impl {
public:
  explicit Impl(const Options& options)
      : certificate_(Certificate::make(options.folder.empty() ? folder_.path().toStdString()
                                                              : options.folder,
                                       options.hostName)) {
    thread_.start();
    anchor_.moveToThread(&thread_);
    onThread([this] { listen(); });
    if (port_ == 0) {
      end();
      throw std::runtime_error("the HTTPS server cannot listen");
    }
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() { end(); }

  void release(const std::string& path) {
    script_.release(path);
    onThread([this] {
      for (QObject* const child : server_->children())
        if (auto* const connection = dynamic_cast<Connection*>(child))
          connection->answer();
    });
  }

  std::uint16_t port() const { return port_; }
  const Certificate& certificate() const { return certificate_; }
  Script& script() { return script_; }

private:
  template <class Task> void onThread(Task task) {
    QMetaObject::invokeMethod(&anchor_, task, Qt::BlockingQueuedConnection);
  }

  void listen() {
    server_ = std::make_unique<QSslServer>();
    server_->setSslConfiguration(configuration(certificate_));
    QObject::connect(server_.get(), &QSslServer::pendingConnectionAvailable, server_.get(),
                     [this] { accept(); });
    if (server_->listen(QHostAddress::LocalHost))
      port_ = server_->serverPort();
  }

  /// Each connection deletes itself, or is deleted with the server.
  void accept() {
    while (QTcpSocket* const socket = server_->nextPendingConnection())
      new Connection(qobject_cast<QSslSocket*>(socket), script_);
  }

  void end() {
    onThread([this] { server_.reset(); });
    thread_.quit();
    thread_.wait();
  }

  const QTemporaryDir folder_;
  const Certificate certificate_;
  Script script_;
  QThread thread_;
  QObject anchor_; ///< lives on the thread: receives its tasks
  std::unique_ptr<QSslServer> server_;
  std::uint16_t port_ = 0;
};

HttpsServer::HttpsServer(const Options& options) : impl_(std::make_unique<Impl>(options)) {}

HttpsServer::~HttpsServer() = default;

std::uint16_t HttpsServer::port() const {
  return impl_->port();
}

std::string HttpsServer::url(const std::string& path) const {
  return "https://localhost:" + std::to_string(port()) + path;
}

std::string HttpsServer::certificateFile() const {
  return impl_->certificate().certificateFile;
}

void HttpsServer::serve(const std::string& path, HttpsReply reply) {
  impl_->script().serve(path, std::move(reply));
}

void HttpsServer::hold(const std::string& path) {
  impl_->script().hold(path);
}

void HttpsServer::release(const std::string& path) {
  impl_->release(path);
}

std::vector<HttpsRequest> HttpsServer::requests() const {
  return impl_->script().requests();
}

bool HttpsServer::awaitRequests(const std::string& path, std::size_t count) const {
  return impl_->script().awaitRequests(path, count);
}

bool HttpsServer::awaitSent(const std::string& path, std::uint64_t bytes) const {
  return impl_->script().awaitSent(path, bytes);
}

std::uint64_t HttpsServer::sent(const std::string& path) const {
  return impl_->script().sent(path);
}

bool HttpsServer::awaitNoConnections() const {
  return impl_->script().awaitNoConnections();
}

} // namespace driftmark::test
