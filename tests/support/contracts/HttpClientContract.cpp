#include "support/contracts/HttpClientContract.h"

#include <optional>
#include <vector>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(HttpClientContract);

TEST_P(HttpClientContract, bodyComesOnceAndNeverInsideTheCall) {
  std::vector<HttpClient::DataReply> replies;
  client().fetch({.url = subject_->urlOf("body")}, largestBody,
                 [&](HttpClient::DataReply reply) { replies.push_back(std::move(reply)); });
  EXPECT_TRUE(replies.empty());
  ASSERT_TRUE(runUntil([&] { return !replies.empty(); }));
  ASSERT_EQ(replies.size(), 1U);
  EXPECT_EQ(replies[0].data, "body");
  EXPECT_FALSE(replies[0].error.has_value());
}

TEST_P(HttpClientContract, downloadedFileHoldsTheBody) {
  std::optional<std::string> contents;
  client().download(subject_->urlOf("archive"), [&](const HttpClient::DownloadReply& reply) {
    EXPECT_FALSE(reply.error.has_value());
    contents = reply.file ? subject_->contentsOf(*reply.file) : "no file";
  });
  EXPECT_FALSE(contents.has_value());
  ASSERT_TRUE(runUntil([&] { return contents.has_value(); }));
  EXPECT_EQ(contents, "archive");
}

TEST_P(HttpClientContract, unreachableServerIsAnErrorWithWords) {
  std::optional<HttpClient::DataReply> data;
  std::optional<HttpClient::DownloadReply> file;
  const std::string url = subject_->unreachableUrl();
  client().fetch({.url = url}, largestBody,
                 [&](HttpClient::DataReply reply) { data = std::move(reply); });
  client().download(url, [&](HttpClient::DownloadReply reply) { file = std::move(reply); });
  EXPECT_FALSE(data.has_value() || file.has_value());
  ASSERT_TRUE(runUntil([&] { return data.has_value() && file.has_value(); }));
  EXPECT_FALSE(data->data.has_value() || file->file.has_value());
  ASSERT_TRUE(data->error.has_value() && file->error.has_value());
  EXPECT_FALSE(data->error->description.empty());
  EXPECT_FALSE(file->error->description.empty());
}

TEST_P(HttpClientContract, requestsDoNotMixTheirReplies) {
  std::vector<std::string> bodies(3);
  for (std::size_t number = 0; number < bodies.size(); ++number)
    client().fetch({.url = subject_->urlOf("body " + std::to_string(number))}, largestBody,
                   [&, number](const HttpClient::DataReply& reply) {
                     bodies[number] = reply.data.value_or("error");
                   });
  ASSERT_TRUE(
      runUntil([&] { return !bodies[0].empty() && !bodies[1].empty() && !bodies[2].empty(); }));
  EXPECT_EQ(bodies, (std::vector<std::string>{"body 0", "body 1", "body 2"}));
}

} // namespace driftmark::test
