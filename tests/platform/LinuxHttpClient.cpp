// How the HTTPS client handles the replies of a real server.

#include "platform/linux/network/LinuxHttpClient.h"

#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/RunToEnd.h"
#include "harness/SmallVolume.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"
#include "https/HttpsServer.h"
#include "platform/linux/desktop/LinuxAdapters.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
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

/// Files of this process grow up to a limit as long as this object lives. A write across the limit
/// is short, the next one fails.
class FileSizeLimit {
public:
  explicit FileSizeLimit(rlim_t bytes) : action_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limited{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limited);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, action_);
  }

private:
  void (*action_)(int);
  rlimit before_{};
};

class LinuxHttpClientTest : public testing::Test {
protected:
  using Body = HttpClient::Body;
  using File = HttpClient::File;

  std::variant<Body, PlatformError> send(const HttpClient::Request& request,
                                         std::size_t maxBodySize) {
    std::optional<std::variant<Body, PlatformError>> reply;
    client_->fetch(request, maxBodySize, [&](auto got) { reply = std::move(got); });
    EXPECT_TRUE(runUntil([&] { return reply.has_value(); }));
    return reply.value_or(PlatformError{"no reply"});
  }

  /// Fetches a body; an error fails the test.
  std::string fetch(const HttpClient::Request& request, std::size_t maxBodySize = unlimited) {
    const auto reply = send(request, maxBodySize);
    if (const auto* const error = std::get_if<PlatformError>(&reply)) {
      ADD_FAILURE() << error->description;
      return "";
    }
    return std::get<Body>(reply).bytes;
  }
  std::string fetch(const std::string& url, std::size_t maxBodySize = unlimited) {
    return fetch(HttpClient::Request{.url = url}, maxBodySize);
  }

  /// Sends a request that fails, and returns the error.
  std::string failure(const HttpClient::Request& request, std::size_t maxBodySize = unlimited) {
    const auto reply = send(request, maxBodySize);
    const auto* const error = std::get_if<PlatformError>(&reply);
    EXPECT_TRUE(error);
    return error ? error->description : "no error";
  }
  std::string failure(const std::string& url, std::size_t maxBodySize = unlimited) {
    return failure(HttpClient::Request{.url = url}, maxBodySize);
  }

  /// Downloads a URL. Returns what the file held while the handler ran, or why there is none.
  std::string download(const std::string& url) {
    std::optional<std::string> outcome;
    client_->download(url, [&](const auto& reply) {
      const auto* const file = std::get_if<File>(&reply);
      outcome = file ? contentsOf(file->path) : std::get<PlatformError>(reply).description;
    });
    EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
    return outcome.value_or("");
  }

  std::string temporaryFolder() const {
    return std::get<std::string>(fileSystem_.temporaryDirectory());
  }

  std::vector<std::string> temporaryFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(temporaryFolder()))
      names.push_back(entry.path().filename().string());
    return names;
  }

  TemporaryFolder folder_;
  ScopedVariable temporary_{"TMPDIR", folder_.path()};
  HttpsServer server_;
  std::optional<ScopedVariable> caCertificates_{std::in_place, "DRIFTMARK_EXTRA_CA_CERTIFICATES",
                                                server_.certificateFile()};
  LinuxFileSystem fileSystem_{""};
  std::unique_ptr<LinuxHttpClient> client_ =
      std::make_unique<LinuxHttpClient>(fileSystem_, fetchProgram());
};

TEST_F(LinuxHttpClientTest, bodyIsUnchanged) {
  using namespace std::string_literals;
  const std::string body = "{\"a\": \"\xc3\xa9\"}\0\r\n\xff"s;
  server_.serve("/a?b=c", {.body = body});
  EXPECT_EQ(fetch(server_.url("/a?b=c")), body);
  ASSERT_EQ(server_.requests().size(), 1U);
  EXPECT_EQ(server_.requests()[0].method, "GET");
  EXPECT_EQ(server_.requests()[0].header("accept-encoding"), "identity");
}

TEST_F(LinuxHttpClientTest, emptyBodyIsNoError) {
  server_.serve("/", {});
  EXPECT_EQ(fetch(server_.url("/")), "");
  EXPECT_EQ(download(server_.url("/")), "");
}

TEST_F(LinuxHttpClientTest, largeBodyIsComplete) {
  const std::string body(5'000'000, 'x');
  server_.serve("/", {.body = body});
  EXPECT_EQ(fetch(server_.url("/"), body.size()), body);
  EXPECT_EQ(download(server_.url("/")), body);
}

TEST_F(LinuxHttpClientTest, chunkedBodyIsComplete) {
  const std::string body(300'000, 'x');
  server_.serve("/", {.body = body, .isChunked = true});
  EXPECT_EQ(fetch(server_.url("/")), body);
}

TEST_F(LinuxHttpClientTest, errorPageIsReturnedAsReply) {
  for (const int status : {400, 401, 403, 404, 405, 409, 410, 418, 500, 501, 503, 599}) {
    server_.serve("/", {.status = status, .body = "<html>sorry"});
    EXPECT_EQ(fetch(server_.url("/")), "<html>sorry") << status;
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
  EXPECT_EQ(fetch(server_.url("/a")), "there");
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
  EXPECT_EQ(fetch("HTTPS://localhost:" + std::to_string(server_.port()) + "/"), "x");
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
  EXPECT_EQ(fetch(server_.url("/")), "x");
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
  EXPECT_EQ(fetch(server_.url("/"), 5), "12345");
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
  EXPECT_EQ(failure({.url = server_.url("/"), .timeoutInterval = Seconds(0.1)}),
            "The request timed out.");
  EXPECT_TRUE(server_.awaitNoConnections());
}

TEST_F(LinuxHttpClientTest, serverWithoutTlsHandshakeTimesOut) {
  QTcpServer plain;
  ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
  EXPECT_EQ(failure({.url = "https://localhost:" + std::to_string(plain.serverPort()),
                     .timeoutInterval = Seconds(0.1)}),
            "The request timed out.");
}

TEST_F(LinuxHttpClientTest, slowBodyDoesNotTimeOut) {
  server_.serve("/", {.isEndless = true});
  const auto start = std::chrono::steady_clock::now();
  bool replied = false;
  client_->fetch({.url = server_.url("/"), .timeoutInterval = Seconds(0.2)}, unlimited,
                 [&](const auto& /*reply*/) { replied = true; });
  runUntil([&] { return replied || std::chrono::steady_clock::now() - start > Seconds(0.6); });
  EXPECT_FALSE(replied);
}

TEST_F(LinuxHttpClientTest, slowReplyEndsAtItsMaxDuration) {
  server_.serve("/", {.isEndless = true, .pause = std::chrono::milliseconds(10)});
  EXPECT_EQ(failure({.url = server_.url("/"), .maxDuration = Seconds(3)}),
            "The request timed out.");
  EXPECT_GT(server_.sent("/"), 1U) << "the server never paused for long";
  EXPECT_TRUE(server_.awaitNoConnections());
}

TEST_F(LinuxHttpClientTest, maxDurationIncludesRedirectsAndHeaders) {
  server_.serve("/", HttpsReply::redirect(server_.url("/headers")));
  server_.serve("/headers", {.hasEndlessHeaders = true});
  EXPECT_EQ(failure({.url = server_.url("/"), .maxDuration = Seconds(3)}),
            "The request timed out.");
  runFor(Seconds(0.01)); // until the transfer is deleted
  EXPECT_TRUE(server_.awaitNoConnections());
}

TEST_F(LinuxHttpClientTest, replyBeforeItsMaxDurationIsComplete) {
  server_.serve("/", {.body = "slow", .pause = std::chrono::milliseconds(10)});
  EXPECT_EQ(fetch({.url = server_.url("/"), .maxDuration = Seconds(60)}), "slow");
}

TEST_F(LinuxHttpClientTest, clientMayEndBeforeMaxDuration) {
  server_.hold("/");
  client_->fetch({.url = server_.url("/"), .maxDuration = Seconds(0.01)}, unlimited,
                 [](const auto& /*reply*/) { FAIL(); });
  client_.reset();
  runFor(Seconds(0.05));
  EXPECT_TRUE(server_.awaitNoConnections());
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
  client_->download(server_.url("/"), [&](const auto& reply) {
    file = std::get<File>(reply).path;
    EXPECT_EQ(contentsOf(file), "archive");
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  });
  ASSERT_TRUE(runUntil([&] { return !file.empty(); }));
  EXPECT_TRUE(file.starts_with(temporaryFolder()));
  EXPECT_TRUE(runUntil([&] { return temporaryFiles().empty(); }));
}

TEST_F(LinuxHttpClientTest, downloadWithoutTemporaryFolderIsErrorAndSendsNothing) {
  const ScopedVariable nowhere("TMPDIR", folder_.path("missing"));
  EXPECT_THAT(download(server_.url("/")), testing::EndsWith("No such file or directory"));
  EXPECT_TRUE(server_.requests().empty());
}

TEST_F(LinuxHttpClientTest, movedDownloadIsKept) {
  server_.serve("/", {.body = "archive"});
  const std::string kept = folder_.path("kept");
  bool over = false;
  client_->download(server_.url("/"), [&](const auto& reply) {
    EXPECT_FALSE(fileSystem_.moveItem(std::get<File>(reply).path, kept).has_value());
    over = true;
  });
  ASSERT_TRUE(runUntil([&] { return over; }));
  EXPECT_EQ(contentsOf(kept), "archive");
  EXPECT_TRUE(temporaryFiles().empty());
}

TEST_F(LinuxHttpClientTest, downloadIsWrittenAsItArrivesAndRemovedWithClient) {
  server_.serve("/", {.isEndless = true});
  client_->download(server_.url("/"), [](const auto& /*reply*/) { FAIL(); });
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
  LinuxHttpClient client(fileSystem, fetchProgram());
  std::optional<PlatformError> error;
  client.download(server_.url("/"),
                  [&](const auto& reply) { error = std::get<PlatformError>(reply); });
  ASSERT_TRUE(runUntil([&] { return error.has_value(); }));
  EXPECT_NE(error->description, "");
}

TEST_F(LinuxHttpClientTest, downloadOnFullVolumeSaysSo) {
  const SmallVolume volume(69'632);
  if (!volume.exists())
    GTEST_SKIP() << "this user may not mount volumes";
  server_.serve("/", {.zeros = 100'000});
  const ScopedVariable full("TMPDIR", volume.path());
  LinuxFileSystem fileSystem("");
  client_ = std::make_unique<LinuxHttpClient>(fileSystem, fetchProgram());
  EXPECT_EQ(download(server_.url("/")), "No space left on device");
  EXPECT_TRUE(std::filesystem::is_empty(std::get<std::string>(fileSystem.temporaryDirectory())));
  client_.reset();
}

TEST_F(LinuxHttpClientTest, shortWriteIsFinishedAndItsErrorNamed) {
  server_.serve("/", {.zeros = 100'000});
  const FileSizeLimit limit(65'000);
  EXPECT_EQ(download(server_.url("/")), "File too large");
}

TEST_F(LinuxHttpClientTest, handlerMayDestroyClient) {
  server_.serve("/", {.body = "x"});
  bool over = false;
  client_->fetch({.url = server_.url("/")}, unlimited, [&](const auto& /*reply*/) {
    client_.reset();
    over = true;
  });
  EXPECT_TRUE(runUntil([&] { return over; }));
}

TEST_F(LinuxHttpClientTest, missingProgramIsNamedError) {
  client_ = std::make_unique<LinuxHttpClient>(fileSystem_, folder_.path("missing"));
  EXPECT_THAT(failure(server_.url("/")),
              testing::StartsWith("driftmark-fetch couldn’t be started: "));
}

TEST_F(LinuxHttpClientTest, programIsKeptWhenItsBundleIsRemoved) {
  server_.serve("/", {.body = "x"});
  const std::string copy = folder_.path("copy");
  std::filesystem::copy(fetchProgram(), copy);
  client_ = std::make_unique<LinuxHttpClient>(fileSystem_, copy);
  std::filesystem::remove(copy);
  EXPECT_EQ(fetch(server_.url("/")), "x");
}

TEST_F(LinuxHttpClientTest, programLoadsNoNetworkLibrary) {
  const std::string libraries = runToEnd({"/usr/bin/ldd", {driftmarkProgram()}, {}}).output;
  EXPECT_THAT(libraries, HasSubstr("libQt6Core"));
  EXPECT_THAT(libraries, testing::Not(HasSubstr("libQt6Network")));
}

TEST_F(LinuxHttpClientTest, requestsRunInParallel) {
  for (const char* const path : {"/1", "/2", "/3"})
    server_.serve(path, {.body = path});
  server_.hold("/1");
  std::vector<std::string> bodies;
  for (const char* const path : {"/1", "/2", "/3"})
    client_->fetch({.url = server_.url(path)}, unlimited,
                   [&](const auto& reply) { bodies.push_back(std::get<Body>(reply).bytes); });
  EXPECT_TRUE(runUntil([&] { return bodies.size() == 2; }));
  server_.release("/1");
  EXPECT_TRUE(runUntil([&] { return bodies.size() == 3; }));
  EXPECT_EQ(bodies.back(), "/1");
}

} // namespace
} // namespace driftmark::test
