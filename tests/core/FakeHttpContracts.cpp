// The fake of the HTTP client keeps the contract of its port.

#include "support/TestHttpClient.h"
#include "support/contracts/HttpClientContract.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace driftmark::test {
namespace {

using testing::Values;

/// Replies to all pending requests whenever the queue runs.
class FakeHttpClient final : public TrustedHttpSubject {
public:
  HttpClient& client() override { return *client_; }
  std::string urlOf(const std::string& body) override { return std::string(server) + body; }
  std::string endlessUrl() override { return "https://endless/"; }
  std::string unreachableUrl() override { return "https://unreachable/"; }
  std::string untrustedUrl() override { return "https://untrusted/"; }
  std::string contentsOf(const std::string& file) override { return file.substr(1); }

  bool runUntil(const std::function<bool()>& done) override {
    for (; client_ && fetches_ < client_->fetches().size(); ++fetches_)
      reply(client_->fetches()[fetches_].request);
    for (; client_ && downloads_ < client_->downloads().size(); ++downloads_)
      replyFile(client_->downloads()[downloads_]);
    return done();
  }

  void destroy() override { client_.reset(); }

private:
  static constexpr std::string_view server = "https://fake/";

  void reply(const HttpClient::Request& request) {
    if (request.url.starts_with(server))
      client_->reply(request.url.substr(server.size()));
    else if (request.url != endlessUrl() || request.maxDuration)
      client_->fail({"no reply"});
  }

  void replyFile(const std::string& url) {
    if (url.starts_with(server))
      client_->replyFile("/" + url.substr(server.size()));
    else
      client_->failDownload({"no reply"});
  }

  std::optional<TestHttpClient> client_{std::in_place};
  std::size_t fetches_ = 0;
  std::size_t downloads_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Fake, HttpClientContract,
                         Values(subject<HttpClientSubject, FakeHttpClient>("fake")), subjectName);
INSTANTIATE_TEST_SUITE_P(Fake, HttpReplyContract,
                         Values(subject<TrustedHttpSubject, FakeHttpClient>("fake")), subjectName);

} // namespace
} // namespace driftmark::test
