#include "monitor/TextCuts.h"

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(TextCutsTest, lastComponentIsWhatFollowsTheLastSlash) {
  EXPECT_EQ(lastPathComponent("/a/b/c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("/c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("/a b/c d"), "c d");
  EXPECT_EQ(lastPathComponent("/a/."), ".");
}

TEST(TextCutsTest, trailingSlashesAreNotCounted) {
  EXPECT_EQ(lastPathComponent("/a/b/"), "b");
  EXPECT_EQ(lastPathComponent("/a/b///"), "b");
  EXPECT_EQ(lastPathComponent("b/"), "b");
}

TEST(TextCutsTest, pathOfSlashesOnlyIsTheRoot) {
  EXPECT_EQ(lastPathComponent("/"), "/");
  EXPECT_EQ(lastPathComponent("///"), "/");
  EXPECT_EQ(lastPathComponent(""), "");
}

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
