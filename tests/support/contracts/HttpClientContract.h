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

  /// An address that is answered with this body.
  virtual std::string urlOf(const std::string& body) = 0;

  /// An address that nobody answers at.
  virtual std::string unreachableUrl() = 0;

  /// What a downloaded file holds.
  virtual std::string contentsOf(const std::string& file) = 0;

  /// Runs the main queue until `done`; false when a generous deadline passes first.
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
