#include "support/contracts/SystemTextContract.h"

#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SystemTextContract);

TEST_P(SystemTextContract, differentSizesHaveDifferentTexts) {
  const std::vector<std::int64_t> sizes{0, 4096, 1'200'000, 3'400'000'000, 5'600'000'000'000};
  std::set<std::string> texts;
  for (const std::int64_t size : sizes)
    texts.insert(text().byteCount(size));
  EXPECT_EQ(texts.size(), sizes.size());
  EXPECT_FALSE(texts.contains(""));
}

TEST_P(SystemTextContract, everyByteCountIsOneLine) {
  for (const std::int64_t size :
       {std::int64_t(0), std::int64_t(1), std::int64_t(-1),
        std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
    const std::string words = text().byteCount(size);
    EXPECT_FALSE(words.empty()) << size;
    EXPECT_EQ(words.find('\n'), std::string::npos) << size;
  }
}

TEST_P(SystemTextContract, byteCountIsSameOnEveryThread) {
  const std::string here = text().byteCount(123'456'789);
  std::string there;
  std::thread other([&] { there = text().byteCount(123'456'789); });
  other.join();
  EXPECT_EQ(there, here);
}

TEST_P(SystemTextContract, urlIsDistinguishedFromOtherText) {
  for (const char* const url :
       {"https://example.com/appcast.json", "https://example.com:8443/a?b=c#d", "appcast.json",
        "../up/a.zip", "https://[::1]/", "mailto:someone@example.com", "a%20b"})
    EXPECT_TRUE(text().isUrl(url)) << url;
  for (const char* const other : {"", "https://exam ple.com/", "not an address", "a b"})
    EXPECT_FALSE(text().isUrl(other)) << other;
}

TEST_P(SystemTextContract, textIsCutBetweenCharacters) {
  EXPECT_EQ(text().firstCharacters("abc", 0), "");
  EXPECT_EQ(text().firstCharacters("abc", 2), "ab");
  EXPECT_EQ(text().firstCharacters("abc", 3), "abc");
  EXPECT_EQ(text().firstCharacters("abc", 4), "abc");
  EXPECT_EQ(text().firstCharacters("é日😀x", 3), "é日😀");
}

} // namespace driftmark::test
