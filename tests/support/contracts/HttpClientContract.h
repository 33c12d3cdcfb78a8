#pragma once

#include "ports/HttpClient.h"
#include "support/contracts/SubjectFactory.h"

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {

/// An HTTPS client under test, with servers.
class HttpClientSubject {
public:
  virtual ~HttpClientSubject() = default;

  virtual HttpClient& client() = 0;

  /// A URL whose reply has this body.
  virtual std::string urlOf(const std::string& body) = 0;

  /// A URL whose reply never ends, although it never pauses for long.
  virtual std::string endlessUrl() = 0;

  /// A URL without a server.
  virtual std::string unreachableUrl() = 0;

  /// The contents of a downloaded file.
  virtual std::string contentsOf(const std::string& file) = 0;

  /// Runs the main queue until `done`; false after a long timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;
};

class HttpClientContract : public testing::TestWithParam<SubjectFactory<HttpClientSubject>> {
protected:
  HttpClient& client() { return subject_->client(); }
  bool runUntil(const std::function<bool()>& done) { return subject_->runUntil(done); }

  static constexpr std::size_t maxBodySize = 1000;

  std::unique_ptr<HttpClientSubject> subject_ = GetParam().make();
};

} // namespace driftmark::test
