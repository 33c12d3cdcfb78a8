// How the program that fetches is run, and where the body of a reply goes.

#include "platform/linux/network/LinuxHttpClient.h"

#include "platform/posix/files/FileItems.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <QByteArray>
#include <QFile>
#include <QMetaObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryFile>
#include <QTimer>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace driftmark {

namespace {

/// The longest reason for a failure, in bytes.
constexpr qsizetype maxReasonSize = 1000;

int milliseconds(Seconds duration) {
  constexpr auto max = static_cast<double>(std::numeric_limits<int>::max());
  return static_cast<int>(
      std::clamp(std::chrono::duration<double, std::milli>(duration).count(), 1.0, max));
}

QStringList argumentsFor(const HttpClient::Request& request) {
  QStringList arguments{"--timeout", QString::number(milliseconds(request.timeoutInterval))};
  if (request.cachePolicy == HttpClient::CachePolicy::reloadIgnoringLocalCacheData)
    arguments.append("--reload");
  // Not taken for an option.
  return arguments << "--" << QString::fromStdString(request.url);
}

/// Runs in the child before its program starts: it ends when this process ends, however that
/// happens.
void endWith(pid_t parent) {
  sigset_t none{};
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent)
    _exit(1);
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

  /// Sends `request` by the program behind the descriptor. `owner` becomes the parent of the
  /// transfer.
  static void start(int program, const HttpClient::Request& request, std::unique_ptr<Body> body,
                    QObject& owner);

  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;
  ~HttpTransfer() override;

private:
  HttpTransfer(std::unique_ptr<Body> body, QObject& owner);

  void send(int program, const HttpClient::Request& request);
  void end(const QString& fault);
  void abort(const QString& fault);
  void receiveWaiting();
  void finish(int exitStatus);

  std::unique_ptr<Body> body_; ///< null once the transfer has ended
  QProcess process_;
};

void HttpTransfer::start(int program, const HttpClient::Request& request,
                         std::unique_ptr<Body> body, QObject& owner) {
  // Deleted by its parent, or by itself at its end.
  (new HttpTransfer(std::move(body), owner))->send(program, request);
}

HttpTransfer::HttpTransfer(std::unique_ptr<Body> body, QObject& owner)
    : QObject(&owner), body_(std::move(body)) {}

HttpTransfer::~HttpTransfer() {
  process_.disconnect();
  process_.kill();
  process_.waitForFinished(-1);
}

void HttpTransfer::send(int program, const HttpClient::Request& request) {
  process_.setProgram(QString("/proc/self/fd/%1").arg(program));
  process_.setArguments(argumentsFor(request));
  process_.setStandardInputFile(QProcess::nullDevice());
  process_.setChildProcessModifier([parent = getpid()] { endWith(parent); });
  connect(&process_, &QProcess::readyReadStandardOutput, this, &HttpTransfer::receiveWaiting);
  connect(&process_, &QProcess::finished, this, &HttpTransfer::finish);
  connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart)
      end(QString("driftmark-fetch couldn’t be started: %1").arg(process_.errorString()));
  });
  process_.start();
  if (request.maxDuration)
    QTimer::singleShot(milliseconds(*request.maxDuration), this, [this] {
      if (body_)
        abort("The request timed out.");
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
  process_.kill();
}

void HttpTransfer::receiveWaiting() {
  const QByteArray bytes = process_.readAllStandardOutput();
  if (!body_ || bytes.isEmpty())
    return;
  if (const QString fault = body_->receive(bytes); !fault.isEmpty())
    abort(fault);
}

void HttpTransfer::finish(int exitStatus) {
  receiveWaiting();
  if (!body_)
    return;
  const bool isComplete = process_.exitStatus() == QProcess::NormalExit && exitStatus == 0;
  const QByteArray reason = process_.readAllStandardError().left(maxReasonSize);
  if (isComplete)
    end({});
  else
    end(reason.isEmpty() ? QString("The request was interrupted.") : QString::fromUtf8(reason));
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

LinuxHttpClient::LinuxHttpClient(FileSystem& fileSystem, const std::string& program)
    : fileSystem_(fileSystem), program_(open(program.c_str(), O_PATH | O_CLOEXEC)) {}

void LinuxHttpClient::fetch(const Request& request, std::size_t maxBodySize, FetchHandler onReply) {
  HttpTransfer::start(program_.number(), request,
                      std::make_unique<BodyInMemory>(maxBodySize, std::move(onReply)), transfers_);
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
      program_.number(), {.url = url},
      std::make_unique<BodyInFile>(std::get<std::string>(folder), std::move(onReply)), transfers_);
}

} // namespace driftmark
