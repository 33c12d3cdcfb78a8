#include "support/contracts/HttpClientContract.h"

#include <optional>
#include <vector>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(HttpClientContract);

TEST_P(HttpClientContract, bodyArrivesOnceAfterCallReturned) {
  std::vector<std::string> replies;
  client().fetch({.url = subject_->urlOf("body")}, maxBodySize, [&](const auto& reply) {
    replies.push_back(std::get<HttpClient::Body>(reply).bytes);
  });
  EXPECT_TRUE(replies.empty());
  ASSERT_TRUE(runUntil([&] { return !replies.empty(); }));
  EXPECT_EQ(replies, std::vector<std::string>{"body"});
}

TEST_P(HttpClientContract, downloadedFileHoldsBody) {
  std::optional<std::string> contents;
  client().download(subject_->urlOf("archive"), [&](const auto& reply) {
    contents = subject_->contentsOf(std::get<HttpClient::File>(reply).path);
  });
  EXPECT_FALSE(contents.has_value());
  ASSERT_TRUE(runUntil([&] { return contents.has_value(); }));
  EXPECT_EQ(contents, "archive");
}

TEST_P(HttpClientContract, unreachableServerIsDescribedError) {
  std::vector<std::string> errors;
  const auto keepError = [&](const auto& reply) {
    errors.push_back(std::get<PlatformError>(reply).description);
  };
  const std::string url = subject_->unreachableUrl();
  client().fetch({.url = url}, maxBodySize, keepError);
  client().download(url, keepError);
  EXPECT_TRUE(errors.empty());
  ASSERT_TRUE(runUntil([&] { return errors.size() == 2; }));
  for (const std::string& error : errors)
    EXPECT_FALSE(error.empty());
}

TEST_P(HttpClientContract, replyThatTakesTooLongIsDescribedError) {
  std::string error;
  client().fetch({.url = subject_->endlessUrl(), .maxDuration = Seconds(0.2)}, maxBodySize,
                 [&](const auto& reply) { error = std::get<PlatformError>(reply).description; });
  EXPECT_TRUE(runUntil([&] { return !error.empty(); }));
}

TEST_P(HttpClientContract, requestsGetTheirOwnReplies) {
  std::vector<std::string> bodies(3);
  for (std::size_t number = 0; number < bodies.size(); ++number)
    client().fetch({.url = subject_->urlOf("body " + std::to_string(number))}, maxBodySize,
                   [&, number](const auto& reply) {
                     bodies[number] = std::get<HttpClient::Body>(reply).bytes;
                   });
  ASSERT_TRUE(
      runUntil([&] { return !bodies[0].empty() && !bodies[1].empty() && !bodies[2].empty(); }));
  EXPECT_EQ(bodies, (std::vector<std::string>{"body 0", "body 1", "body 2"}));
}

} // namespace driftmark::test
