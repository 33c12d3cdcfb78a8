#pragma once

#include "ports/HttpClient.h"
#include "support/contracts/SubjectFactory.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// An HTTPS client under test, with servers.
class HttpClientSubject {
public:
  virtual ~HttpClientSubject() = default;

  virtual HttpClient& client() = 0;

  /// A URL whose reply never ends.
  virtual std::string endlessUrl() = 0;

  /// A URL without a server, and one whose server has a certificate that nobody vouches for.
  virtual std::string unreachableUrl() = 0;
  virtual std::string untrustedUrl() = 0;

  /// Runs the main queue until `done`; false after a long timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;

  /// Destroys the client.
  virtual void destroy() = 0;
};

/// The same with a server that the system trusts.
class TrustedHttpSubject : public HttpClientSubject {
public:
  /// A URL whose reply has this body.
  virtual std::string urlOf(const std::string& body) = 0;

  /// The contents of a downloaded file.
  virtual std::string contentsOf(const std::string& file) = 0;
};

/// What the handlers of one test have received. Any thread.
class ReceivedTexts {
public:
  void add(std::string text);
  std::size_t count() const;
  std::vector<std::string> sorted() const;

private:
  mutable std::mutex mutex_;
  std::vector<std::string> texts_;
};

/// How requests fail.
class HttpClientContract : public testing::TestWithParam<SubjectFactory<HttpClientSubject>> {
protected:
  static constexpr std::size_t maxBodySize = 1000;

  /// Expects that both kinds of request fail with a description, after the call.
  void expectErrors(const std::string& url);

  std::unique_ptr<HttpClientSubject> subject_ = GetParam().make();
};

/// What a reply is.
class HttpReplyContract : public testing::TestWithParam<SubjectFactory<TrustedHttpSubject>> {
protected:
  static constexpr std::size_t maxBodySize = 1000;

  void fetch(const std::string& body);
  bool runUntil(const std::function<bool()>& done) { return subject_->runUntil(done); }

  std::unique_ptr<TrustedHttpSubject> subject_ = GetParam().make();
  ReceivedTexts received_;
};

} // namespace driftmark::test
