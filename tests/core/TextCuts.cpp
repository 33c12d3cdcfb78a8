#include "support/TextCuts.h"

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(TextCutsTest, spacesAndTabsGoFromBothEnds) {
  EXPECT_EQ(trimmed(" \t a \t b \t "), "a \t b");
  EXPECT_EQ(trimmed("a"), "a");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed(" \t "), "");
}

TEST(TextCutsTest, otherWhiteSpaceStays) {
  EXPECT_EQ(trimmed("\r\n\v\f a \u00a0"), "\r\n\v\f a \u00a0");
}

} // namespace
} // namespace driftmark::test
