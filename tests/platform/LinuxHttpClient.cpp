// How the HTTPS client handles the replies of a real server.

#include "platform/linux/network/LinuxHttpClient.h"

#include "ScopedVariable.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "https/HttpsServer.h"
#include "platform/linux/desktop/LinuxFileSystem.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::HasSubstr;

constexpr std::size_t unlimited = static_cast<std::size_t>(1) << 40U;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The memory of this process that is in use, in bytes.
std::size_t residentMemory() {
  std::ifstream file("/proc/self/statm");
  std::size_t all = 0;
  std::size_t resident = 0;
  file >> all >> resident;
  return resident * static_cast<std::size_t>(getpagesize());
}

class LinuxHttpClientTest : public testing::Test {
protected:
  using DataReply = HttpClient::DataReply;
  using DownloadReply = HttpClient::DownloadReply;

  DataReply fetch(const HttpClient::Request& request, std::size_t maxBody = unlimited) {
    std::optional<DataReply> reply;
    client_->fetch(request, maxBody, [&](DataReply got) { reply = std::move(got); });
    EXPECT_TRUE(runUntil([&] { return reply.has_value(); }));
    return reply.value_or(DataReply{});
  }
  DataReply fetch(const std::string& url, std::size_t maxBody = unlimited) {
    return fetch(HttpClient::Request{.url = url}, maxBody);
  }

  /// Fetches a URL and returns why that failed.
  std::string failure(const std::string& url, std::size_t maxBody = unlimited) {
    const DataReply reply = fetch(url, maxBody);
    EXPECT_FALSE(reply.data.has_value());
    return reply.error ? reply.error->description : "no error";
  }

  /// Downloads a URL. Returns what the file held while the handler ran, or why there is none.
  std::string download(const std::string& url) {
    std::optional<std::string> outcome;
    client_->download(url, [&](const DownloadReply& reply) {
      outcome = reply.file ? contentsOf(*reply.file) : reply.error->description;
    });
    EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
    return outcome.value_or("");
  }

  std::vector<std::string> temporaryFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(fileSystem_.temporaryDirectory()))
      names.push_back(entry.path().filename().string());
    return names;
  }

  TemporaryFolder folder_;
  ScopedVariable temporary_{"TMPDIR", folder_.path()};
  HttpsServer server_;
  std::optional<ScopedVariable> caCertificates_{std::in_place, "DRIFTMARK_EXTRA_CA_CERTIFICATES",
                                                server_.certificateFile()};
  LinuxFileSystem fileSystem_{""};
  std::unique_ptr<LinuxHttpClient> client_ = std::make_unique<LinuxHttpClient>(fileSystem_);
};

TEST_F(LinuxHttpClientTest, bodyIsUnchanged) {
  using namespace std::string_literals;
  const std::string body = "{\"a\": \"\xc3\xa9\"}\0\r\n\xff"s;
  server_.serve("/a?b=c", {.body = body});
  const DataReply reply = fetch(server_.url("/a?b=c"));
  EXPECT_EQ(reply.data, body);
  EXPECT_FALSE(reply.error.has_value());
  ASSERT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(server_.requests()[0].method, "GET");
  EXPECT_EQ(server_.requests()[0].header("accept-encoding"), "identity");
}

TEST_F(LinuxHttpClientTest, emptyBodyIsNoError) {
  server_.serve("/", {});
  EXPECT_EQ(fetch(server_.url("/")).data, "");
  EXPECT_EQ(download(server_.url("/")), "");
}

TEST_F(LinuxHttpClientTest, largeBodyIsComplete) {
  const std::string body(5'000'000, 'x');
  server_.serve("/", {.body = body});
  EXPECT_EQ(fetch(server_.url("/"), body.size()).data, body);
  EXPECT_EQ(download(server_.url("/")), body);
}

TEST_F(LinuxHttpClientTest, chunkedBodyIsComplete) {
  const std::string body(300'000, 'x');
  server_.serve("/", {.body = body, .isChunked = true});
  EXPECT_EQ(fetch(server_.url("/")).data, body);
}

TEST_F(LinuxHttpClientTest, errorPageIsReturnedAsReply) {
  for (const int status : {400, 401, 403, 404, 405, 409, 410, 418, 500, 501, 503, 599}) {
    server_.serve("/", {.status = status, .body = "<html>sorry"});
    const DataReply reply = fetch(server_.url("/"));
    EXPECT_EQ(reply.data, "<html>sorry") << status << (reply.error ? reply.error->description : "");
    EXPECT_EQ(download(server_.url("/")), "<html>sorry") << status;
  }
}

TEST_F(LinuxHttpClientTest, truncatedBodyIsError) {
  for (const int status : {200, 404})
    for (const std::uint64_t cut : {std::uint64_t(0), std::uint64_t(5), std::uint64_t(299'999)})
      for (const bool isChunked : {false, true}) {
        server_.serve("/", {.status = status,
                            .body = std::string(300'000, 'x'),
                            .isChunked = isChunked,
                            .cutAfter = cut});
        EXPECT_NE(failure(server_.url("/")), "") << status << ' ' << cut << ' ' << isChunked;
        EXPECT_LT(download(server_.url("/")).size(), 200U);
      }
  EXPECT_TRUE(temporaryFiles().empty());
}

TEST_F(LinuxHttpClientTest, redirectToSecureUrlIsFollowed) {
  server_.serve("/a", HttpsReply::redirect(server_.url("/b"), 301));
  server_.serve("/b", HttpsReply::redirect("/c"));
  server_.serve("/c", {.body = "there"});
  EXPECT_EQ(fetch(server_.url("/a")).data, "there");
}

TEST_F(LinuxHttpClientTest, redirectToInsecureUrlIsError) {
  QTcpServer plain;
  ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
  server_.serve("/a",
                HttpsReply::redirect("http://localhost:" + std::to_string(plain.serverPort())));
  EXPECT_NE(failure(server_.url("/a")), "");
  EXPECT_FALSE(plain.hasPendingConnections());
  folder_.write("secret", "secret");
  server_.serve("/b", HttpsReply::redirect("file://" + folder_.path("secret")));
  EXPECT_NE(failure(server_.url("/b")), "");
}

TEST_F(LinuxHttpClientTest, endlessRedirectsAreError) {
  server_.serve("/a", HttpsReply::redirect(server_.url("/a")));
  EXPECT_NE(failure(server_.url("/a")), "");
}

TEST_F(LinuxHttpClientTest, insecureUrlIsNotRequested) {
  QTcpServer plain;
  ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
  const std::string secureOnly = "Only secure (https) addresses are supported.";
  EXPECT_EQ(failure("http://localhost:" + std::to_string(plain.serverPort())), secureOnly);
  EXPECT_EQ(failure("ftp://localhost/x"), secureOnly);
  const std::string none = "This is not the address of a server.";
  for (const char* const url : {"", "appcast.json", "https://", "https:///x", "file:///etc/passwd",
                                "https://local host/", "data:,x"})
    EXPECT_EQ(failure(url), none) << url;
  EXPECT_FALSE(plain.hasPendingConnections());
}

TEST_F(LinuxHttpClientTest, upperCaseSchemeIsAccepted) {
  server_.serve("/", {.body = "x"});
  EXPECT_EQ(fetch("HTTPS://localhost:" + std::to_string(server_.port()) + "/").data, "x");
}

TEST_F(LinuxHttpClientTest, unknownCaCertificateIsErrorThatNamesCertificate) {
  caCertificates_.emplace("DRIFTMARK_EXTRA_CA_CERTIFICATES", std::nullopt);
  EXPECT_THAT(failure(server_.url("/")), HasSubstr("certificate"));
  EXPECT_TRUE(server_.requests().empty());
}

TEST_F(LinuxHttpClientTest, certificateOfOtherHostIsError) {
  const HttpsServer other({.folder = {}, .hostName = "elsewhere.invalid"});
  caCertificates_.emplace("DRIFTMARK_EXTRA_CA_CERTIFICATES", other.certificateFile());
  EXPECT_THAT(failure(other.url("/")), HasSubstr("certificate"));
  EXPECT_TRUE(other.requests().empty());
}

TEST_F(LinuxHttpClientTest, fileWithoutCaCertificatesIsError) {
  folder_.write("none.pem", "nothing");
  caCertificates_.emplace("DRIFTMARK_EXTRA_CA_CERTIFICATES", folder_.path("none.pem"));
  EXPECT_EQ(failure(server_.url("/")),
            "There is no certificate in " + folder_.path("none.pem") + ".");
}

TEST_F(LinuxHttpClientTest, extraCaCertificatesApplyToOneRequest) {
  server_.serve("/", {.body = "x"});
  EXPECT_EQ(fetch(server_.url("/")).data, "x");
  caCertificates_.emplace("DRIFTMARK_EXTRA_CA_CERTIFICATES", std::nullopt);
  EXPECT_NE(failure(server_.url("/")), "");
}

TEST_F(LinuxHttpClientTest, unreachableServerIsSystemsError) {
  std::string url;
  {
    const HttpsServer gone;
    url = gone.url("/");
  }
  EXPECT_EQ(failure(url), "Connection refused");
  EXPECT_EQ(download(url), "Connection refused");
  EXPECT_THAT(failure("https://name.invalid/"), HasSubstr("name.invalid"));
}

TEST_F(LinuxHttpClientTest, bodyLargerThanLimitIsError) {
  server_.serve("/", {.body = "12345"});
  EXPECT_EQ(fetch(server_.url("/"), 5).data, "12345");
  EXPECT_EQ(failure(server_.url("/"), 4), "The server sent more than was expected.");
  EXPECT_EQ(failure(server_.url("/"), 0), "The server sent more than was expected.");
}

TEST_F(LinuxHttpClientTest, endlessBodyIsDroppedAtLimit) {
  server_.serve("/", {.isEndless = true});
  EXPECT_EQ(failure(server_.url("/"), 1'000'000), "The server sent more than was expected.");
  EXPECT_TRUE(server_.awaitNoConnections());
  // The buffers of both sides may have been full.
  EXPECT_LT(server_.sent("/"), 30'000'000U);
}

TEST_F(LinuxHttpClientTest, silentServerTimesOut) {
  server_.hold("/");
  const DataReply reply = fetch({.url = server_.url("/"), .timeoutInterval = Seconds(0.1)});
  ASSERT_TRUE(reply.error.has_value());
  EXPECT_EQ(reply.error->description, "The request timed out.");
  EXPECT_TRUE(server_.awaitNoConnections());
}

TEST_F(LinuxHttpClientTest, serverWithoutTlsHandshakeTimesOut) {
  QTcpServer plain;
  ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
  const DataReply reply = fetch({.url = "https://localhost:" + std::to_string(plain.serverPort()),
                                 .timeoutInterval = Seconds(0.1)});
  ASSERT_TRUE(reply.error.has_value());
  EXPECT_EQ(reply.error->description, "The request timed out.");
}

TEST_F(LinuxHttpClientTest, slowBodyDoesNotTimeOut) {
  server_.serve("/", {.isEndless = true});
  const auto start = std::chrono::steady_clock::now();
  std::optional<DataReply> reply;
  client_->fetch({.url = server_.url("/"), .timeoutInterval = Seconds(0.2)}, unlimited,
                 [&](DataReply got) { reply = std::move(got); });
  runUntil(
      [&] { return reply.has_value() || std::chrono::steady_clock::now() - start > Seconds(0.6); });
  EXPECT_FALSE(reply.has_value()) << reply->error.value_or(PlatformError{}).description;
}

TEST_F(LinuxHttpClientTest, reloadAsksCachesForLatestVersion) {
  server_.serve("/", {.body = "x"});
  fetch(server_.url("/"));
  fetch({.url = server_.url("/"),
         .cachePolicy = HttpClient::CachePolicy::reloadIgnoringLocalCacheData});
  const auto requests = server_.requests();
  ASSERT_EQ(requests.size(), 2U) << "nothing is kept here either";
  EXPECT_EQ(requests[0].header("cache-control"), "");
  EXPECT_EQ(requests[1].header("cache-control"), "no-cache");
}

TEST_F(LinuxHttpClientTest, downloadIsPrivateFileRemovedAfterHandler) {
  server_.serve("/", {.body = "archive"});
  std::string file;
  client_->download(server_.url("/"), [&](const DownloadReply& reply) {
    file = reply.file.value_or("");
    EXPECT_EQ(contentsOf(file), "archive");
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  });
  ASSERT_TRUE(runUntil([&] { return !file.empty(); }));
  EXPECT_TRUE(file.starts_with(fileSystem_.temporaryDirectory()));
  EXPECT_TRUE(runUntil([&] { return temporaryFiles().empty(); }));
}

TEST_F(LinuxHttpClientTest, movedDownloadIsKept) {
  server_.serve("/", {.body = "archive"});
  const std::string kept = folder_.path("kept");
  bool over = false;
  client_->download(server_.url("/"), [&](const DownloadReply& reply) {
    EXPECT_FALSE(fileSystem_.moveItem(reply.file.value_or(""), kept).has_value());
    over = true;
  });
  ASSERT_TRUE(runUntil([&] { return over; }));
  EXPECT_EQ(contentsOf(kept), "archive");
  EXPECT_TRUE(temporaryFiles().empty());
}

TEST_F(LinuxHttpClientTest, downloadIsWrittenAsItArrivesAndRemovedWithClient) {
  server_.serve("/", {.isEndless = true});
  client_->download(server_.url("/"), [](const DownloadReply&) { FAIL(); });
  [[maybe_unused]] const std::size_t before = residentMemory();
  EXPECT_TRUE(runUntil([&] { return server_.sent("/") > 100'000'000; }));
#ifndef DRIFTMARK_SANITIZED // which keeps freed memory
  EXPECT_LT(residentMemory(), before + 30'000'000);
#endif
  client_.reset();
  EXPECT_TRUE(server_.awaitNoConnections());
  EXPECT_TRUE(temporaryFiles().empty());
}

TEST_F(LinuxHttpClientTest, downloadThatCannotBeWrittenIsError) {
  server_.serve("/", {.body = "archive"});
  const ScopedVariable full("TMPDIR", "/proc");
  LinuxFileSystem fileSystem("");
  LinuxHttpClient client(fileSystem);
  std::optional<DownloadReply> reply;
  client.download(server_.url("/"), [&](DownloadReply got) { reply = std::move(got); });
  ASSERT_TRUE(runUntil([&] { return reply.has_value(); }));
  ASSERT_TRUE(reply->error.has_value());
  EXPECT_NE(reply->error->description, "");
  EXPECT_FALSE(reply->file.has_value());
}

TEST_F(LinuxHttpClientTest, handlerMayDestroyClient) {
  server_.serve("/", {.body = "x"});
  bool over = false;
  client_->fetch({.url = server_.url("/")}, unlimited, [&](const DataReply&) {
    client_.reset();
    over = true;
  });
  EXPECT_TRUE(runUntil([&] { return over; }));
}

TEST_F(LinuxHttpClientTest, requestsRunInParallel) {
  for (const char* const path : {"/1", "/2", "/3"})
    server_.serve(path, {.body = path});
  server_.hold("/1");
  std::vector<std::string> bodies;
  for (const char* const path : {"/1", "/2", "/3"})
    client_->fetch({.url = server_.url(path)}, unlimited,
                   [&](const DataReply& reply) { bodies.push_back(reply.data.value_or("error")); });
  EXPECT_TRUE(runUntil([&] { return bodies.size() == 2; }));
  server_.release("/1");
  EXPECT_TRUE(runUntil([&] { return bodies.size() == 3; }));
  EXPECT_EQ(bodies.back(), "/1");
}

} // namespace
} // namespace driftmark::test
