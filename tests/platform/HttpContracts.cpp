// The HTTP client keeps the contract of its port, with real servers.

#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "https/HttpsServer.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/network/LinuxHttpClient.h"
#include "support/contracts/HttpClientContract.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include <QFile>

namespace driftmark::test {
namespace {

using testing::Values;

class RealHttpClient final : public TrustedHttpSubject {
public:
  HttpClient& client() override { return *client_; }
  std::string urlOf(const std::string& body) override {
    const std::string path = "/" + std::to_string(++pages_);
    server_.serve(path, {.body = body});
    return server_.url(path);
  }
  std::string endlessUrl() override {
    server_.serve("/endless", {.isEndless = true, .pause = std::chrono::milliseconds(20)});
    return server_.url("/endless");
  }
  std::string unreachableUrl() override { return HttpsServer().url("/"); }
  std::string untrustedUrl() override { return stranger_.url("/"); }
  std::string contentsOf(const std::string& file) override {
    QFile reader(QString::fromStdString(file));
    return reader.open(QIODevice::ReadOnly) ? reader.readAll().toStdString() : "";
  }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  void destroy() override { client_.reset(); }

private:
  TemporaryFolder folder_;
  ScopedVariable temporary_{"TMPDIR", folder_.path()};
  HttpsServer server_;
  HttpsServer stranger_;
  ScopedVariable caCertificates_{"DRIFTMARK_EXTRA_CA_CERTIFICATES", server_.certificateFile()};
  LinuxFileSystem fileSystem_{""};
  std::optional<LinuxHttpClient> client_{std::in_place, fileSystem_, fetchProgram()};
  int pages_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Linux, HttpClientContract,
                         Values(subject<HttpClientSubject, RealHttpClient>("real")), subjectName);
INSTANTIATE_TEST_SUITE_P(Linux, HttpReplyContract,
                         Values(subject<TrustedHttpSubject, RealHttpClient>("real")), subjectName);

} // namespace
} // namespace driftmark::test
