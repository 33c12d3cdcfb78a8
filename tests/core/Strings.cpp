#include "support/Strings.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

TEST(StringsTest, spacesAndTabsAreTrimmedFromBothEnds) {
  EXPECT_EQ(trimmed(" \t a \t b \t "), "a \t b");
  EXPECT_EQ(trimmed("a"), "a");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed(" \t "), "");
}

TEST(StringsTest, otherWhiteSpaceIsNotTrimmed) {
  EXPECT_EQ(trimmed("\r\n\v\f a \u00a0"), "\r\n\v\f a \u00a0");
}

TEST(StringsTest, controlCharactersAreEscapedInOneLine) {
  EXPECT_EQ(oneLine("uploading caf\u00e9\tnoir \\n.pdf"), "uploading caf\u00e9\tnoir \\n.pdf");
  EXPECT_EQ(oneLine("a\nb\rc\x1b[31m\0\x7f end"s), "a\\nb\\rc\\x1b[31m\\x00\\x7f end");
  EXPECT_EQ(oneLine(""), "");
}

TEST(StringsTest, clearedScratchKeepsOnlyOrdinaryMemory) {
  std::string text(1000, 'x');
  const std::size_t capacity = text.capacity();
  clearScratch(text);
  EXPECT_EQ(text, "");
  EXPECT_EQ(text.capacity(), capacity);
  text.assign(5000, 'x');
  clearScratch(text);
  EXPECT_EQ(text, "");
  EXPECT_LT(text.capacity(), 5000U);
}

} // namespace
} // namespace driftmark::test
