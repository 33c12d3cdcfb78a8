// The HTTP client fails as its port says, with servers of this machine that the system does not
// trust. Replies need one that it trusts.

#include "platform/macos/MacHttpClient.h"

#include "harness/TemporaryFolder.h"
#include "macos/LocalPort.h"
#include "macos/RunLoop.h"
#include "platform/macos/MacMainQueue.h"
#include "platform/macos/MacPlatform.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "support/contracts/HttpClientContract.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace driftmark::test {
namespace {

using testing::Values;

/// A server with a certificate that it has signed itself: the system's OpenSSL.
class UntrustedServer {
public:
  UntrustedServer() {
    makeCertificate();
    auto spawned = children_.spawn(
        {openssl,
         {"s_server", "-accept", std::to_string(port_), "-key", key_, "-cert", certificate_,
          "-www"}},
        [this](std::string_view bytes) { output_ += bytes; }, [] {});
    if (!std::holds_alternative<TerminalChild>(spawned))
      throw std::runtime_error("no server");
    child_ = std::get<TerminalChild>(std::move(spawned));
    EXPECT_TRUE(runUntil([this] { return output_.find("ACCEPT") != std::string::npos; }))
        << output_;
  }

  std::string url() const { return "https://127.0.0.1:" + std::to_string(port_) + "/"; }

private:
  static constexpr const char* openssl = "/usr/bin/openssl";

  void makeCertificate() {
    const auto run = children_.prepare({openssl,
                                        {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout",
                                         key_, "-out", certificate_, "-subj", "/CN=127.0.0.1"}},
                                       ToolOutput::discard);
    const auto made = run->run();
    const auto* const result = std::get_if<ToolResult>(&made);
    if (result == nullptr || result->exitStatus != 0)
      throw std::runtime_error("no certificate");
  }

  TemporaryFolder folder_;
  const std::string key_ = folder_.path("key.pem");
  const std::string certificate_ = folder_.path("certificate.pem");
  const int port_ = LocalPort(LocalPort::Kind::refusing).number(); ///< free again
  std::string output_;
  MacMainQueue queue_;
  PosixChildProcesses children_{queue_, ""};
  TerminalChild child_;
};

class RealHttpClient final : public HttpClientSubject {
public:
  HttpClient& client() override { return *client_; }
  std::string endlessUrl() override { return silent_.url(); }
  std::string unreachableUrl() override { return refusing_.url(); }
  std::string untrustedUrl() override { return untrusted_.emplace().url(); }
  bool runUntil(const std::function<bool()>& done) override { return test::runUntil(done); }
  void destroy() override { client_.reset(); }

private:
  LocalPort silent_{LocalPort::Kind::silent};
  LocalPort refusing_{LocalPort::Kind::refusing};
  std::optional<UntrustedServer> untrusted_;
  MacMainQueue queue_; ///< the run loop waits while it has a source
  std::optional<MacHttpClient> client_{std::in_place};
};

INSTANTIATE_TEST_SUITE_P(Mac, HttpClientContract,
                         Values(subject<HttpClientSubject, RealHttpClient>("real")), subjectName);

/// The replies come while the platform is destroyed, or later: then nobody hears of them.
TEST(MacPlatform, requestsMayEndDuringItsDestruction) {
  const LocalPort silent(LocalPort::Kind::silent);
  const auto token = std::make_shared<int>(0);
  for (int run = 0; run < 20; ++run) {
    MacPlatform platform;
    const Platform ports = platform.ports();
    for (const std::string& url : {std::string("http://127.0.0.1/"), silent.url()})
      ports.httpClient.fetch(
          {.url = url, .maxDuration = Seconds(0.1)}, 1,
          [token, queue = &ports.mainQueue](const auto&) { queue->async([token] {}); });
  }
  EXPECT_TRUE(runUntil([&] { return token.use_count() == 1; }));
}

} // namespace
} // namespace driftmark::test
