#include "support/contracts/HttpClientContract.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>
#include <variant>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(HttpClientContract);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(HttpReplyContract);

namespace {

/// Adds the description of a failed request; for one that succeeded, an empty text.
auto addingError(ReceivedTexts& errors) {
  return [&errors](const auto& reply) {
    const auto* const error = std::get_if<PlatformError>(&reply);
    errors.add(error ? error->description : "");
  };
}

} // namespace

void ReceivedTexts::add(std::string text) {
  const std::lock_guard lock(mutex_);
  texts_.push_back(std::move(text));
}

std::size_t ReceivedTexts::count() const {
  const std::lock_guard lock(mutex_);
  return texts_.size();
}

std::vector<std::string> ReceivedTexts::sorted() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> texts = texts_;
  std::sort(texts.begin(), texts.end());
  return texts;
}

void HttpClientContract::expectErrors(const std::string& url) {
  ReceivedTexts errors;
  bool isInsideCall = true; // this thread's
  const std::thread::id here = std::this_thread::get_id();
  const auto onReply = [&, add = addingError(errors)](const auto& reply) {
    EXPECT_FALSE(std::this_thread::get_id() == here && isInsideCall);
    add(reply);
  };
  subject_->client().fetch({.url = url}, maxBodySize, onReply);
  subject_->client().download(url, onReply);
  isInsideCall = false;
  EXPECT_TRUE(subject_->runUntil([&] { return errors.count() == 2; }));
  for (const std::string& error : errors.sorted())
    EXPECT_FALSE(error.empty());
  subject_->destroy();
}

// ---- requests that fail ----

TEST_P(HttpClientContract, unreachableServerIsDescribedError) {
  expectErrors(subject_->unreachableUrl());
}

TEST_P(HttpClientContract, unknownCertificateIsDescribedError) {
  expectErrors(subject_->untrustedUrl());
}

TEST_P(HttpClientContract, insecureUrlIsDescribedError) {
  expectErrors("http://127.0.0.1/");
}

TEST_P(HttpClientContract, replyThatTakesTooLongIsDescribedError) {
  ReceivedTexts errors;
  subject_->client().fetch({.url = subject_->endlessUrl(), .maxDuration = Seconds(0.2)},
                           maxBodySize, addingError(errors));
  EXPECT_TRUE(subject_->runUntil([&] { return errors.count() == 1; }));
  EXPECT_NE(errors.sorted(), std::vector<std::string>{""});
  subject_->destroy();
}

TEST_P(HttpClientContract, noHandlerIsCalledAfterDestruction) {
  const auto calls = std::make_shared<std::atomic<int>>(0);
  for (const std::string& url : {subject_->unreachableUrl(), std::string("http://127.0.0.1/")}) {
    subject_->client().fetch({.url = url}, maxBodySize, [calls](const auto&) { ++*calls; });
    subject_->client().download(url, [calls](const auto&) { ++*calls; });
  }
  subject_->destroy();
  const int before = *calls;
  EXPECT_TRUE(subject_->runUntil([&] { return calls.use_count() == 1; }));
  EXPECT_EQ(*calls, before);
}

// ---- replies ----

void HttpReplyContract::fetch(const std::string& body) {
  subject_->client().fetch({.url = subject_->urlOf(body)}, maxBodySize,
                           [this, body](const auto& reply) {
                             const std::string& bytes = std::get<HttpClient::Body>(reply).bytes;
                             received_.add(bytes == body ? bytes : "the reply to another request");
                           });
}

TEST_P(HttpReplyContract, bodyArrivesOnceAfterCallReturned) {
  fetch("body");
  EXPECT_EQ(received_.count(), 0U);
  ASSERT_TRUE(runUntil([&] { return received_.count() > 0; }));
  EXPECT_EQ(received_.sorted(), std::vector<std::string>{"body"});
}

TEST_P(HttpReplyContract, downloadedFileHoldsBody) {
  subject_->client().download(subject_->urlOf("archive"), [&](const auto& reply) {
    received_.add(subject_->contentsOf(std::get<HttpClient::File>(reply).path));
  });
  EXPECT_EQ(received_.count(), 0U);
  ASSERT_TRUE(runUntil([&] { return received_.count() > 0; }));
  EXPECT_EQ(received_.sorted(), std::vector<std::string>{"archive"});
}

TEST_P(HttpReplyContract, everyRequestGetsItsReply) {
  const std::vector<std::string> bodies{"body 0", "body 1", "body 2"};
  for (const std::string& body : bodies)
    fetch(body);
  ASSERT_TRUE(runUntil([&] { return received_.count() == bodies.size(); }));
  EXPECT_EQ(received_.sorted(), bodies);
}

} // namespace driftmark::test
