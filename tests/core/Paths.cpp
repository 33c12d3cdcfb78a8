#include "support/Paths.h"

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(PathsTest, trailingSlashesAreRemovedButTheRootStays) {
  EXPECT_EQ(withoutTrailingSlashes("/a/b//"), "/a/b");
  EXPECT_EQ(withoutTrailingSlashes("/a"), "/a");
  EXPECT_EQ(withoutTrailingSlashes("//"), "/");
  EXPECT_EQ(withoutTrailingSlashes(""), "");
}

TEST(PathsTest, lastComponentIsWhatFollowsTheLastSlash) {
  EXPECT_EQ(lastPathComponent("/a/b/c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("/c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("c.txt"), "c.txt");
  EXPECT_EQ(lastPathComponent("/a b/c d"), "c d");
  EXPECT_EQ(lastPathComponent("/a/."), ".");
}

TEST(PathsTest, trailingSlashesAreNotCounted) {
  EXPECT_EQ(lastPathComponent("/a/b/"), "b");
  EXPECT_EQ(lastPathComponent("/a/b///"), "b");
  EXPECT_EQ(lastPathComponent("b/"), "b");
}

TEST(PathsTest, pathOfSlashesOnlyIsTheRoot) {
  EXPECT_EQ(lastPathComponent("/"), "/");
  EXPECT_EQ(lastPathComponent("///"), "/");
  EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathsTest, parentIsThePathWithoutItsLastComponent) {
  EXPECT_EQ(deletingLastPathComponent("/Applications/Driftmark.app"), "/Applications");
  EXPECT_EQ(deletingLastPathComponent("/Applications/Driftmark.app/"), "/Applications");
  EXPECT_EQ(deletingLastPathComponent("/a//b"), "/a");
  EXPECT_EQ(deletingLastPathComponent("/a"), "/");
  EXPECT_EQ(deletingLastPathComponent("/"), "/");
  EXPECT_EQ(deletingLastPathComponent("a"), "");
  EXPECT_EQ(deletingLastPathComponent(""), "");
}

TEST(PathsTest, folderAndNameAreJoinedByOneSlash) {
  EXPECT_EQ(appendingPathComponent("/Users/ada", "Applications"), "/Users/ada/Applications");
  EXPECT_EQ(appendingPathComponent("/Users/ada/", "Applications"), "/Users/ada/Applications");
  EXPECT_EQ(appendingPathComponent("/", "Applications"), "/Applications");
  EXPECT_EQ(appendingPathComponent("", "Applications"), "/Applications");
}

TEST(PathsTest, homeAtTheStartBecomesATilde) {
  EXPECT_EQ(abbreviatingWithTilde("/Users/ada/Downloads", "/Users/ada"), "~/Downloads");
  EXPECT_EQ(abbreviatingWithTilde("/Users/ada", "/Users/ada"), "~");
}

TEST(PathsTest, foldersOutsideTheHomeAreUnchanged) {
  EXPECT_EQ(abbreviatingWithTilde("/Users/adam/Downloads", "/Users/ada"), "/Users/adam/Downloads");
  EXPECT_EQ(abbreviatingWithTilde("/opt", "/Users/ada"), "/opt");
  EXPECT_EQ(abbreviatingWithTilde("/opt", ""), "/opt");
}

} // namespace
} // namespace driftmark::test
