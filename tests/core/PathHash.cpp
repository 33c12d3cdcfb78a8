#include "monitor/PathHash.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(PathHashTest, equalBytesHaveEqualHashesWhereverTheyLie) {
  const std::string text = "xx/Users/ada/Library/Mobile Documents/a.txt";
  const std::string copy = text.substr(2);
  EXPECT_EQ(hashBytes(std::string_view(text).substr(2)), hashBytes(copy));
}

TEST(PathHashTest, everyByteAndTheLengthMatter) {
  for (std::size_t length = 0; length < 70; ++length) {
    const std::string text(length, 'a');
    std::unordered_set<std::uint64_t> hashes{hashBytes(text)};
    hashes.insert(hashBytes(text + '\0'));
    for (std::size_t at = 0; at < length; ++at)
      for (const char other : {'b', '\0', '\x80', 'A'}) {
        std::string changed = text;
        changed[at] = other;
        hashes.insert(hashBytes(changed));
      }
    EXPECT_EQ(hashes.size(), 2 + 4 * length) << length;
  }
}

TEST(PathHashTest, similarPathsDoNotCollideInTheLowerBits) {
  constexpr int count = 20000;
  constexpr std::size_t buckets = 32768;
  std::unordered_set<std::uint64_t> hashes;
  std::unordered_set<std::size_t> used;
  for (int number = 0; number < count; ++number) {
    const std::uint64_t hash = hashBytes("/folder/file " + std::to_string(number) + ".txt");
    hashes.insert(hash);
    used.insert(hash % buckets);
  }
  EXPECT_EQ(hashes.size(), static_cast<std::size_t>(count));
  // A perfectly even hash would meet about 14,950 of the buckets.
  EXPECT_GT(used.size(), 14500U);
}

TEST(PathHashTest, containersAreSearchedByViewAndByHashedPath) {
  std::unordered_map<std::string, int, PathHash, std::equal_to<>> map{{"/a", 1}, {"/b", 2}};
  EXPECT_EQ(map.find(std::string_view("/b"))->second, 2);
  EXPECT_EQ(map.find(HashedPath("/b"))->second, 2);
  EXPECT_EQ(map.find(HashedPath("/c")), map.end());
}

} // namespace
} // namespace driftmark::test
