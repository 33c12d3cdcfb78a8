#include "monitor/PathTree.h"

#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

TEST(PathTreeTest, unknownPathHasNoValue) {
  PathTree tree;
  EXPECT_EQ(tree.find("/a"), 0);
  EXPECT_EQ(tree.find("/a/b/c"), 0);
  EXPECT_EQ(tree.size(), 0U);
}

TEST(PathTreeTest, exchangeReturnsTheFormerValue) {
  PathTree tree;
  EXPECT_EQ(tree.exchange("/a/b", 1), 0);
  EXPECT_EQ(tree.exchange("/a/b", 2), 1);
  EXPECT_EQ(tree.exchange("/a/b", 7), 2);
  EXPECT_EQ(tree.find("/a/b"), 7);
  EXPECT_EQ(tree.size(), 1U);
}

TEST(PathTreeTest, keptBitsOfTheFormerValueStay) {
  PathTree tree;
  EXPECT_EQ(tree.exchange("/a", 4, 3), 0);
  EXPECT_EQ(tree.find("/a"), 4);
  tree.exchange("/a", 1);
  EXPECT_EQ(tree.exchange("/a", 4, 3), 1);
  EXPECT_EQ(tree.find("/a"), 5);
  EXPECT_EQ(tree.exchange("/a", 2), 5);
  EXPECT_EQ(tree.find("/a"), 2);
}

TEST(PathTreeTest, folderAndItemOfOneNameAreApart) {
  PathTree tree;
  tree.exchange("/a/b", 1);
  EXPECT_EQ(tree.find("/a"), 0);
  tree.exchange("/a", 2);
  EXPECT_EQ(tree.find("/a"), 2);
  EXPECT_EQ(tree.find("/a/b"), 1);
  tree.exchange("/c", 1);
  tree.exchange("/c/d", 2);
  EXPECT_EQ(tree.find("/c"), 1);
  EXPECT_EQ(tree.find("/c/d"), 2);
}

TEST(PathTreeTest, everyByteOfAPathCounts) {
  const std::vector<std::string> paths{"/",
                                       "//",
                                       "///",
                                       "/a",
                                       "/a/",
                                       "/a//",
                                       "//a",
                                       "/a/b",
                                       "/a//b",
                                       "/a/b/",
                                       "/A",
                                       "/a\0b"s,
                                       "/a\0"s,
                                       "/a ",
                                       "/ a",
                                       "/\u00e9",
                                       "/e\u0301",
                                       "/\xff",
                                       "/.",
                                       "/..",
                                       "/a/../b",
                                       "/" + std::string(254, 'x'),
                                       "/" + std::string(255, 'x'),
                                       "/" + std::string(256, 'x'),
                                       "/" + std::string(70000, 'x'),
                                       "/" + std::string(70000, 'x') + "/y"};
  PathTree tree;
  std::map<std::string, PathTree::Value> expected;
  for (const std::string& path : paths) {
    const auto value = static_cast<PathTree::Value>(1 + expected.size() % 7);
    EXPECT_EQ(tree.exchange(path, value), 0) << path.substr(0, 20);
    expected[path] = value;
  }
  ASSERT_EQ(tree.size(), expected.size());
  for (const auto& [path, value] : expected)
    EXPECT_EQ(tree.find(path), value) << path.substr(0, 20) << " of " << path.size();
}

TEST(PathTreeTest, enteringAFolderMapsNothing) {
  PathTree tree;
  const auto folder = tree.enter("/a/b");
  EXPECT_EQ(tree.size(), 0U);
  EXPECT_EQ(tree.find("/a/b"), 0);
  EXPECT_EQ(tree.exchange(folder, "c", 3), 0);
  EXPECT_EQ(tree.find("/a/b/c"), 3);
  EXPECT_EQ(tree.exchange(tree.enter(""), "d", 2), 0);
  EXPECT_EQ(tree.find("/d"), 2);
  EXPECT_EQ(tree.exchange(folder, "c", 1), 3) << "a folder stays good";
}

/// Paths over a few components, so that they meet, nest and come again.
std::string randomPath(std::mt19937& random) {
  static const std::vector<std::string> components{"",       "a",       "b", "ab",
                                                   "Folder", "x\u2601", ".", "a\0"s};
  std::string path;
  for (auto depth = 1 + random() % 5; depth > 0; --depth)
    path += "/" + components[random() % components.size()];
  return path;
}

TEST(PathTreeTest, agreesWithAnOrdinaryMapOnRandomPaths) {
  std::mt19937 random(7);
  PathTree tree;
  std::map<std::string, PathTree::Value> expected;
  for (int i = 0; i < 200000; ++i) {
    const std::string path = randomPath(random);
    const auto found = expected.find(path);
    const PathTree::Value before = found == expected.end() ? PathTree::Value{0} : found->second;
    if (random() % 3 == 0) {
      ASSERT_EQ(tree.find(path), before) << path;
    } else {
      const auto value = static_cast<PathTree::Value>(1 + random() % 7);
      const auto kept = static_cast<PathTree::Value>(random() % 8);
      ASSERT_EQ(tree.exchange(path, value, kept), before) << path;
      expected[path] = static_cast<PathTree::Value>(value | (before & kept));
    }
    ASSERT_EQ(tree.size(), expected.size());
  }
}

TEST(PathTreeTest, manyPathsInOneFolderAndInManyAreAllFound) {
#ifdef DRIFTMARK_SANITIZED
  constexpr int count = 50000;
#else
  constexpr int count = 500000;
#endif
  const auto inOne = [](int i) { return "/all/file " + std::to_string(i) + ".txt"; };
  const auto inMany = [](int i) {
    return "/many/" + std::to_string(i % 977) + "/" + std::to_string(i / 13) + "/" +
           std::to_string(i);
  };
  PathTree tree;
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(tree.exchange(inOne(i), static_cast<PathTree::Value>(1 + i % 7)), 0);
    ASSERT_EQ(tree.exchange(inMany(i), static_cast<PathTree::Value>(1 + i % 5)), 0);
  }
  EXPECT_EQ(tree.size(), 2U * count);
  // In the first order, and in quite another one.
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(tree.find(inOne(i)), 1 + i % 7);
    const auto other = static_cast<int>(std::int64_t{i} * 7919 % count);
    ASSERT_EQ(tree.exchange(inMany(other), static_cast<PathTree::Value>(1 + other % 5)),
              1 + other % 5);
  }
  EXPECT_EQ(tree.find(inOne(count)), 0);
  EXPECT_EQ(tree.size(), 2U * count);
}

} // namespace
} // namespace driftmark::test
