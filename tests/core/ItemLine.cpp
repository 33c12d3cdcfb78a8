#include "monitor/ItemLine.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// The path and the remainder with a bar between them, then the arrows in the remainder.
std::string cut(const std::string& line) {
  const LineScan scan = scanLine(line);
  const ItemLine item = cutItemLine(line, scan);
  return std::string(item.path) + "|" + std::string(item.remainder) +
         (item.hasUpArrow ? " up" : "") + (item.hasDownArrow ? " down" : "");
}

TEST(ItemLineTest, uploadSeparatorTakesPrecedence) {
  EXPECT_EQ(cut(" o /a \u2191 1%"), "/a| \u2191 1% up");
  EXPECT_EQ(cut(" o /p \u2601 x \u2191 1%"), "/p \u2601 x| \u2191 1% up");
  EXPECT_EQ(cut(" o /p \u2191 x \u2191 1%"), "/p| \u2191 x \u2191 1% up");
}

TEST(ItemLineTest, firstCloudSeparatorCutsWithoutAnUploadSeparator) {
  EXPECT_EQ(cut(" o /a \u2601"), "/a| \u2601");
  EXPECT_EQ(cut(" o /a \u2601 \u2193 1%"), "/a| \u2601 \u2193 1% down");
  EXPECT_EQ(cut(" o /a \u2601\u2191"), "/a| \u2601\u2191 up");
  EXPECT_EQ(cut(" o /a \u2601 b \u2601"), "/a| \u2601 b \u2601");
  EXPECT_EQ(cut(" o /a \u2601 \u2191 \u2193"), "/a \u2601| \u2191 \u2193 up down");
}

TEST(ItemLineTest, lineWithoutSeparatorIsAllPath) {
  EXPECT_EQ(cut(" o /a"), "/a|");
  EXPECT_EQ(cut(" o /a\u2601"), "/a\u2601|");
  EXPECT_EQ(cut(" o /a \u2191"), "/a \u2191|") << "the upload separator ends with a space";
  EXPECT_EQ(cut(" o /a \u2193 5%"), "/a \u2193 5%|");
  EXPECT_EQ(cut(" o /a\t\u2601"), "/a\t\u2601|");
}

TEST(ItemLineTest, arrowsInThePathDoNotCount) {
  EXPECT_EQ(cut(" o /\u2191\u2193 \u2601"), "/\u2191\u2193| \u2601");
  EXPECT_EQ(cut(" o /\u2193 \u2191 1%"), "/\u2193| \u2191 1% up");
}

TEST(ItemLineTest, scanFindsEscapesAndIllFormedText) {
  EXPECT_FALSE(scanLine(" o /a \u2601").hasEscape);
  EXPECT_TRUE(scanLine(" o /\u00e9 \x1b[1m\u2601").hasEscape);
  EXPECT_TRUE(scanLine("").isUtf8);
  EXPECT_FALSE(scanLine(" o /a \xe2\x98").isUtf8);
  EXPECT_FALSE(scanLine("\u2601\x1b\xff").isUtf8);
}

} // namespace
} // namespace driftmark::test
