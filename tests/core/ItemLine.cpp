#include "monitor/ItemLine.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using Kind = ItemLine::Kind;

/// What a line says, in words: the path and, behind a bar, the rest.
std::string read(const std::string& line) {
  std::string storage;
  const ItemLine item = readItemLine(line, storage);
  const std::string path(item.path);
  switch (item.kind) {
  case Kind::invalid:
    return "invalid";
  case Kind::other:
    return "other";
  case Kind::ignored:
    return "ignored";
  case Kind::progress:
    return path + (item.direction == Direction::upload ? "|up" : "|down") +
           (item.percent ? " " + std::to_string(*item.percent) : "");
  case Kind::current:
    return path + "|current";
  case Kind::evicted:
    return path + "|evicted";
  case Kind::unrecognized:
    return path + "|" + std::string(item.state);
  }
  return "";
}

TEST(ItemLineTest, uploadSeparatorGoesFirst) {
  EXPECT_EQ(read(" o /a \u2191 1%"), "/a|up 1.000000");
  EXPECT_EQ(read(" o /p \u2601 x \u2191 1%"), "/p \u2601 x|up 1.000000");
  EXPECT_EQ(read(" o /p \u2191 x \u2191 1%"), "/p|up 1.000000");
}

TEST(ItemLineTest, firstCloudSeparatorDividesOtherwise) {
  EXPECT_EQ(read(" o /a \u2601"), "/a|current");
  EXPECT_EQ(read(" o /a \u2601 \u2193 12.5%"), "/a|down 12.500000");
  EXPECT_EQ(read(" o /a \u2601\u2191"), "/a|up");
  EXPECT_EQ(read(" o /a \u2601 b \u2601"), "/a|b \u2601");
  EXPECT_EQ(read(" o /a \u2601 \u2191 \u2193"), "/a \u2601|up");
}

TEST(ItemLineTest, lineWithoutSeparatorIsAPathInSync) {
  EXPECT_EQ(read(" o /a"), "/a|current");
  EXPECT_EQ(read(" o /a\u2601"), "/a\u2601|current");
  EXPECT_EQ(read(" o /a \u2191"), "/a \u2191|current") << "the upload separator ends with a space";
  EXPECT_EQ(read(" o /a \u2193 5%"), "/a \u2193 5%|current");
  EXPECT_EQ(read(" o /a\t\u2601"), "/a\t\u2601|current");
}

TEST(ItemLineTest, arrowsInThePathAreNotThoseOfTheRemainder) {
  EXPECT_EQ(read(" o /\u2191\u2193 \u2601"), "/\u2191\u2193|current");
  EXPECT_EQ(read(" o /\u2193 \u2191 1%"), "/\u2193|up 1.000000");
}

TEST(ItemLineTest, stateIsWhatStandsBehindTheCloud) {
  EXPECT_EQ(read(" o /a \u2601 not downloaded"), "/a|evicted");
  EXPECT_EQ(read(" o /a \u2601 \t "), "/a|current");
  EXPECT_EQ(read(" o /a \u2601 Upload Error 28\r"), "/a|Upload Error 28");
}

TEST(ItemLineTest, hiddenAndTrashedItemsAreIgnored) {
  EXPECT_EQ(read(" o /.a \u2601"), "ignored");
  EXPECT_EQ(read(" o /b/.a/ \u2601"), "ignored");
  EXPECT_EQ(read(" o /.Trashes/a \u2191 1%"), "ignored");
  EXPECT_EQ(read(" o /.\u00e9 \u2601"), "ignored");
  EXPECT_EQ(read(" o /.b/a \u2601"), "/.b/a|current");
  EXPECT_EQ(read(" o /a./b \u2601"), "/a./b|current");
}

TEST(ItemLineTest, hiddenNameIsFoundAtEveryPosition) {
  for (std::size_t before = 0; before < 40; ++before)
    for (std::size_t after = 0; after < 40; ++after) {
      std::string path(1, '/');
      path.append(before, 'x').append("/z").append(after, 'y').append(".");
      ASSERT_EQ(read(" o " + path), path + "|current") << before << ' ' << after;
      path.replace(before + 2, 1, ".");
      ASSERT_EQ(read(" o " + path), "ignored") << before << ' ' << after;
    }
}

TEST(ItemLineTest, textThatIsNotUtf8IsInvalidAtEveryPosition) {
  for (std::size_t before = 0; before < 40; ++before)
    for (std::size_t behind = 0; behind < 20; ++behind)
      for (const char* const broken : {"\x80", "\xff", "\xe2\x98", "\xed\xa0\x80"})
        ASSERT_EQ(read(" o /" + std::string(before, 'x') + broken + std::string(behind, 'y')),
                  "invalid");
}

TEST(ItemLineTest, lastAsciiCharacterBehindAnotherOneIsText) {
  EXPECT_EQ(read(" o /\u00e9\x7f \u2601"), "/\u00e9\x7f|current");
}

TEST(ItemLineTest, coloursAndOuterReturnsAreRemoved) {
  EXPECT_EQ(read("\x1b[1m o /a \u2601\x1b[0m\r\r"), "/a|current");
  EXPECT_EQ(read("\r o /a \u2601\r"), "/a|current");
  EXPECT_EQ(read(" o /a\x1b[0 \u2601"), "/a\x1b[0|current") << "no whole colour sequence";
  EXPECT_EQ(read(" o /\u00e9\x1b[32m \u2601"), "/\u00e9|current");
}

TEST(ItemLineTest, otherLinesAreNotAboutAnItem) {
  for (const char* const line : {"", "\r", "header", "o /a \u2601", " o a \u2601", " o"})
    EXPECT_EQ(read(line), "other") << line;
}

} // namespace
} // namespace driftmark::test
