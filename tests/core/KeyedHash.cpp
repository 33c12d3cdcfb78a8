#include "support/KeyedHash.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

constexpr KeyedHash::Key someKey{0x243f6a8885a308d3, 0x13198a2e03707344, 0xa4093822299f31d0,
                                 0x082efa98ec4e6c89, 0x452821e638d01377, 0xbe5466cf34e90c6c};

#ifdef DRIFTMARK_SANITIZED
constexpr std::size_t manyPaths = 100'000;
#else
constexpr std::size_t manyPaths = 3'000'000;
#endif

std::string pathNumber(std::size_t number) {
  return "/com~apple~CloudDocs/Folder " + std::to_string(number / 100) + "/Picture " +
         std::to_string(number) + ".jpeg";
}

TEST(KeyedHash, everyLengthAndEveryByteCounts) {
  const KeyedHash hash(someKey);
  std::set<std::uint64_t> low;
  std::set<std::uint64_t> high;
  std::size_t texts = 0;
  const auto add = [&](const std::string& text) {
    ++texts;
    low.insert(hash(text).low);
    high.insert(hash(text).high);
  };
  std::string text;
  for (std::size_t length = 0; length <= 70; ++length) {
    add(text);
    for (std::size_t at = 0; at < length; ++at) {
      std::string changed = text;
      changed[at] = 'x';
      add(changed);
    }
    text += '\0';
  }
  EXPECT_EQ(low.size(), texts);
  EXPECT_EQ(high.size(), texts);
}

TEST(KeyedHash, equalTextsHaveEqualFingerprintsWhereverTheyLie) {
  const KeyedHash hash(someKey);
  const std::string text = "xx/Users/ada/Library/Mobile Documents/a.txt";
  const Fingerprint here = hash(std::string_view(text).substr(2));
  const Fingerprint there = hash(text.substr(2));
  EXPECT_EQ(here.low, there.low);
  EXPECT_EQ(here.high, there.high);
}

TEST(KeyedHash, everyTableHasAKeyOfItsOwn) {
  EXPECT_NE(KeyedHash()("/a").low, KeyedHash()("/a").low);
  EXPECT_NE(KeyedHash()("/a").high, KeyedHash()("/a").high);
}

/// The bits that are compared, in windows of 40 bits: as many pairs are alike as chance makes.
TEST(KeyedHash, fingerprintsOfSimilarPathsAreSpreadLikeChance) {
  const KeyedHash hash(someKey);
  std::vector<Fingerprint> fingerprints;
  for (std::size_t number = 0; number < manyPaths; ++number)
    fingerprints.push_back(hash(pathNumber(number)));

  constexpr std::uint64_t mask = (std::uint64_t{1} << 40) - 1;
  const auto count = static_cast<double>(fingerprints.size());
  const double expected = count * (count - 1) / 2 / static_cast<double>(mask + 1);
  const double bound = expected + 6 * std::sqrt(expected) + 3;
  std::vector<std::uint64_t> window(fingerprints.size());
  const auto pairsAlike = [&](auto bits) {
    std::transform(fingerprints.begin(), fingerprints.end(), window.begin(), bits);
    std::sort(window.begin(), window.end());
    double pairs = 0;
    double run = 0;
    for (std::size_t i = 1; i < window.size(); ++i) {
      run = window[i] == window[i - 1] ? run + 1 : 0;
      pairs += run;
    }
    return pairs;
  };
  for (const unsigned shift : {0U, 8U, 16U, 24U}) {
    EXPECT_LE(pairsAlike([&](const Fingerprint& f) { return f.low >> shift & mask; }), bound)
        << shift;
    EXPECT_LE(pairsAlike([&](const Fingerprint& f) { return f.high >> shift & mask; }), bound)
        << shift;
    EXPECT_LE(pairsAlike([&](const Fingerprint& f) {
                return (f.high << 32 | f.low >> 32) >> shift & mask;
              }),
              bound)
        << shift;
  }
}

} // namespace
} // namespace driftmark::test
