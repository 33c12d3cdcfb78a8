#include "support/Numbers.h"

#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(NumbersTest, wholeTextIsReadAsANumber) {
  EXPECT_EQ(toDouble("0"), 0.0);
  EXPECT_EQ(toDouble("12.5"), 12.5);
  EXPECT_EQ(toDouble(".5"), 0.5);
  EXPECT_EQ(toDouble("5."), 5.0);
  EXPECT_EQ(toDouble("-5"), -5.0);
  EXPECT_EQ(toDouble("1e3"), 1000.0);
  EXPECT_EQ(toDouble("00000000000000000000000000000012"), 12.0);
  EXPECT_EQ(toDouble("0.1"), 0.1);
}

TEST(NumbersTest, otherTextIsNoNumber) {
  for (const char* text :
       {"",     ".",   "-",   "+",  "1.2.3", "1,5", " 1",  "1 ", "1\n", "x",   "1x",
        "0x10", "nan", "inf", "1e", "1e+",   "--1", "1-2", "e5", "..",  "1..2"})
    EXPECT_EQ(toDouble(text), std::nullopt) << text;
}

TEST(NumbersTest, decimalsAreRoundedLikeStrtod) {
  std::mt19937_64 random(11);
  for (int i = 0; i < 200000; ++i) {
    std::string text = std::to_string(random() >> (random() % 64));
    text.insert(random() % (text.size() + 1), ".");
    ASSERT_EQ(toDouble(text), std::strtod(text.c_str(), nullptr)) << text;
  }
}

TEST(NumbersTest, integersReachTheEndsOfTheirRange) {
  EXPECT_EQ(toInt64("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(toInt64("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(toInt64("9223372036854775808"), std::nullopt);
  EXPECT_EQ(toInt64("-9223372036854775809"), std::nullopt);
  EXPECT_EQ(toInt64("+42"), 42);
  EXPECT_EQ(toInt64("007"), 7);
}

TEST(NumbersTest, otherTextIsNoInteger) {
  for (const char* text :
       {"", "+", "-", "+-5", "++5", " 5", "5 ", "5\n", "5.0", "5e1", "1,000", "0x5"})
    EXPECT_EQ(toInt64(text), std::nullopt) << text;
}

TEST(NumbersTest, sumBeyondTheRangeIsAbsent) {
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(sum(2, 3), 5);
  EXPECT_EQ(sum(Limits::max(), Limits::min()), -1);
  EXPECT_EQ(sum(Limits::max() - 1, 1), Limits::max());
  EXPECT_EQ(sum(Limits::min() + 1, -1), Limits::min());
  EXPECT_EQ(sum(Limits::max(), 1), std::nullopt);
  EXPECT_EQ(sum(1, Limits::max()), std::nullopt);
  EXPECT_EQ(sum(Limits::min(), -1), std::nullopt);
}

TEST(NumbersTest, wholeNumberRoundsHalvesToEven) {
  EXPECT_EQ(wholeNumber(42.4), "42");
  EXPECT_EQ(wholeNumber(99.6), "100");
  EXPECT_EQ(wholeNumber(0.5), "0");
  EXPECT_EQ(wholeNumber(1.5), "2");
  EXPECT_EQ(wholeNumber(-0.4), "-0");
  EXPECT_EQ(wholeNumber(std::numeric_limits<double>::max()).size(), 309U);
}

} // namespace
} // namespace driftmark::test
