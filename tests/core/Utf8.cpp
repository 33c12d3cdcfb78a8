#include "support/Utf8.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

/// Texts with `middle` at every distance from the start and the end of a block.
std::vector<std::string> placed(const std::string& middle) {
  std::vector<std::string> texts;
  for (std::size_t before = 0; before < 18; ++before)
    for (std::size_t behind = 0; behind < 18; ++behind)
      texts.push_back(std::string(before, 'a') + middle + std::string(behind, 'z'));
  return texts;
}

TEST(Utf8Test, wellFormedSequenceIsUtf8AtEveryPosition) {
  for (const std::string& middle :
       {""s, "\0"s, "\x7f"s, "\u0080"s, "\u07ff"s, "\u0800"s, "\u2601"s, "\ud7ff"s, "\ue000"s,
        "\uffff"s, "\U00010000"s, "\U0010ffff"s, "\u00e9\U0001f4f7\u2601"s})
    for (const std::string& text : placed(middle))
      ASSERT_TRUE(isUtf8(text)) << testing::PrintToString(text);
}

TEST(Utf8Test, textIsCutBetweenCharacters) {
  const std::string text = "a\u00e9\u2601\U0001f4f7z"; // of 1, 2, 3, 4 and 1 bytes
  const std::vector<std::size_t> sizes{0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
  for (std::size_t limit = 0; limit < sizes.size(); ++limit)
    EXPECT_EQ(wholeCharacters(text, limit), text.substr(0, sizes[limit])) << limit;
  EXPECT_EQ(wholeCharacters("\x80\x80\x80", 2), "");
}

TEST(Utf8Test, illFormedSequenceIsNotUtf8AtAnyPosition) {
  for (const std::string& middle :
       {"\x80"s, "\xbf"s, "\xc0\xaf"s, "\xc1\xbf"s, "\xc3"s, "\xc3("s, "\xe0\x9f\xbf"s, "\xe2\x98"s,
        "\xe2(\x81"s, "\xed\xa0\x80"s, "\xed\xbf\xbf"s, "\xf0\x8f\xbf\xbf"s, "\xf0\x9f\x93"s,
        "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s, "\xfe"s, "\xff"s, "\u2601\x81"s})
    for (const std::string& text : placed(middle))
      ASSERT_FALSE(isUtf8(text)) << testing::PrintToString(text);
}

TEST(Utf8Test, wellFormedTextIsNotRepaired) {
  for (const std::string& text : {""s, "plain"s, "a\0b"s, "\u00e9\u2601\U0001f4c4"s, "\u2601 end"s})
    EXPECT_EQ(wellFormed(text), text);
}

TEST(Utf8Test, everyStrayByteIsReplaced) {
  EXPECT_EQ(wellFormed("\xff"), "\ufffd");
  EXPECT_EQ(wellFormed("caf\xe9 noir"), "caf\ufffd noir");
  EXPECT_EQ(wellFormed("\u2601\x81\x81z"), "\u2601\ufffd\ufffdz");
  EXPECT_EQ(wellFormed("a\xe2\x98"), "a\ufffd\ufffd");
  EXPECT_EQ(wellFormed("\xed\xa0\x80\u00e9"), "\ufffd\ufffd\ufffd\u00e9");
}

TEST(Utf8Test, asciiEndsAtTheFirstOtherByte) {
  for (const std::string& stop : {"\u2601"s, "\x80"s, "\xff"s})
    for (const std::string& text : placed(stop))
      ASSERT_EQ(asciiLength(text), text.find(stop)) << testing::PrintToString(text);
  EXPECT_EQ(asciiLength("\x1b[1m\0/\x7f"s), 7U);
}

TEST(Utf8Test, markIsFoundWhereACloserLookIsNeeded) {
  for (const std::string& mark : {"\u2601"s, "\xff"s, "\x1b"s, "/."s})
    for (const std::string& text : placed(mark)) {
      const std::size_t expected = text.find(mark) + (mark == "/." ? 1 : 0);
      for (std::size_t at = 0; at <= expected; ++at)
        ASSERT_EQ(findMark(text, at), expected) << testing::PrintToString(text) << " from " << at;
    }
  for (const std::string& plain : {"/"s, "."s, "/x."s, "./"s, "\x1a\x1c\0\x7f"s})
    for (const std::string& text : placed(plain))
      ASSERT_EQ(findMark(text, 0), text.size()) << testing::PrintToString(text);
}

TEST(Utf8Test, marksBeforeTheStartAreNotFoundAgain) {
  for (const std::string& text : placed("\x1b"))
    for (std::size_t at = text.find('\x1b') + 1; at <= text.size(); ++at)
      ASSERT_EQ(findMark(text, at), text.size()) << testing::PrintToString(text) << " from " << at;
}

} // namespace
} // namespace driftmark::test
