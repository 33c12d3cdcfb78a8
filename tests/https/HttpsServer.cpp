// How the server runs on a thread of its own.

#include "https/HttpsServer.h"

#include "https/Certificate.h"
#include "https/Connection.h"
#include "https/Script.h"
#include "platform/linux/runloop/LinuxMainQueue.h"

#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include <QEventLoop>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTemporaryDir>

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
    std::promise<void> started;
    thread_ = std::thread([&] { run(started); });
    started.get_future().wait();
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
    std::promise<void> released;
    queue_->async([&] {
      for (QObject* const child : server_->children())
        if (auto* const connection = dynamic_cast<Connection*>(child))
          connection->answer();
      released.set_value();
    });
    released.get_future().wait();
  }

  std::uint16_t port() const { return port_; }
  const Certificate& certificate() const { return certificate_; }
  Script& script() { return script_; }

private:
  /// The thread of the server. A queue of ours hands its tasks over: ThreadSanitizer does not see
  /// what Qt hands over.
  void run(std::promise<void>& started) {
    QEventLoop loop;
    LinuxMainQueue queue;
    queue_ = &queue;
    loop_ = &loop;
    listen();
    started.set_value();
    loop.exec();
    server_.reset();
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
    queue_->async([this] { loop_->quit(); });
    thread_.join();
  }

  const QTemporaryDir folder_;
  const Certificate certificate_;
  Script script_;
  std::thread thread_;
  std::uint16_t port_ = 0;

  // On the thread, while it runs.
  LinuxMainQueue* queue_ = nullptr;
  QEventLoop* loop_ = nullptr;
  std::unique_ptr<QSslServer> server_;
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
