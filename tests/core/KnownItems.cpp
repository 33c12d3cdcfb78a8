#include "monitor/KnownItems.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

#ifdef DRIFTMARK_SANITIZED
constexpr std::size_t manyPaths = 100'000;
#else
constexpr std::size_t manyPaths = 3'000'000;
#endif

std::string pathNumber(std::size_t number) {
  return "/com~apple~CloudDocs/Folder " + std::to_string(number / 100) + "/Picture " +
         std::to_string(number) + ".jpeg";
}

TEST(KnownItems, unknownPathHasNoValue) {
  const KeyedHash fingerprint;
  KnownItems items;
  EXPECT_EQ(items.exchange(fingerprint("/a"), 1), 0);
}

TEST(KnownItems, knownPathGivesItsValueBack) {
  const KeyedHash fingerprint;
  KnownItems items;
  items.exchange(fingerprint("/a"), 1);
  items.exchange(fingerprint("/b"), 7);
  EXPECT_EQ(items.exchange(fingerprint("/a"), 2), 1);
  EXPECT_EQ(items.exchange(fingerprint("/a"), 2), 2);
  EXPECT_EQ(items.exchange(fingerprint("/b"), 1), 7);
}

TEST(KnownItems, keptBitsOfTheOldValueStay) {
  const KeyedHash fingerprint;
  KnownItems items;
  const auto path = fingerprint("/a");
  items.exchange(path, 6);
  items.exchange(path, 1, 4);
  EXPECT_EQ(items.exchange(path, 2), 5);
  EXPECT_EQ(items.exchange(path, 2), 2);
}

TEST(KnownItems, valueKeepsNothingThatAnUnknownPathWouldHave) {
  const KeyedHash fingerprint;
  KnownItems items;
  const auto path = fingerprint("/a");
  EXPECT_EQ(items.exchange(path, 4, 3), 0);
  EXPECT_EQ(items.exchange(path, 1), 4);
}

TEST(KnownItems, equalsAMapForMillionsOfPaths) {
  const KeyedHash fingerprint;
  KnownItems items;
  std::vector<KnownItems::Value> expected(manyPaths / 2);
  std::mt19937 random(11);
  for (std::size_t step = 0; step < manyPaths; ++step) {
    const std::size_t number = random() % expected.size();
    const auto value = static_cast<KnownItems::Value>(1 + random() % 3);
    const auto kept = static_cast<KnownItems::Value>(random() % 2 * 4);
    const auto path = fingerprint(pathNumber(number));
    items.prefetch(path);
    ASSERT_EQ(items.exchange(path, value, kept), expected[number]);
    expected[number] = static_cast<KnownItems::Value>(value | (expected[number] & kept));
  }
}

/// Few places and few segments: almost every search passes the slots of other paths.
TEST(KnownItems, equalsAMapWhenFingerprintsShareTheirPlaces) {
  KnownItems items;
  std::unordered_map<std::uint64_t, KnownItems::Value> expected;
  std::mt19937_64 random(12);
  for (int step = 0; step < 60'000; ++step) {
    const std::uint64_t number = random() % 3000;
    const Fingerprint weak{(number % 5) << 61 | number % 60, number / 60 << 60 | number / 60};
    const auto value = static_cast<KnownItems::Value>(1 + random() % 7);
    ASSERT_EQ(items.exchange(weak, value), expected[number]);
    expected[number] = value;
  }
}

} // namespace
} // namespace driftmark::test
