#include "support/DisplayedText.h"

#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

constexpr std::size_t unlimited = 1'000'000;

std::string lines(const std::string& text) {
  return displayedText(text, LineBreaks::stay, unlimited);
}

std::string line(const std::string& text) {
  return displayedText(text, LineBreaks::becomeSpaces, unlimited);
}

TEST(DisplayedTextTest, plainTextIsUnchanged) {
  const std::string text = "Fewer wake-ups – “caf\u00e9”, \u65e5\u672c, \u05e9\u05dc\u05d5\u05dd.";
  EXPECT_EQ(lines(text), text);
  EXPECT_EQ(line(text), text);
  EXPECT_EQ(lines(""), "");
}

TEST(DisplayedTextTest, directionControlsAreDropped) {
  EXPECT_EQ(lines("1\u202e5\u202c \u202aa\u202c\u202b\u202c\u202d\u202c "
                  "\u2066b\u2069\u2067\u2069\u2068\u2069 \u200ec\u200f\u061cd\u206a\u206f"),
            "15 a b cd");
}

TEST(DisplayedTextTest, joinersAndMarksStay) {
  const std::string text =
      "\U0001F469\u200d\U0001F4BB \u0645\u06cc\u200c\u062e e\u0301 \u2764\ufe0f";
  EXPECT_EQ(lines(text), text);
  EXPECT_EQ(line(text), text);
}

TEST(DisplayedTextTest, controlCharactersAreReplaced) {
  EXPECT_EQ(lines("a\0b\x1b[31mc\x7f\u0080\u009f\x1f"s),
            "a\ufffdb\ufffd[31mc\ufffd\ufffd\ufffd\ufffd");
}

TEST(DisplayedTextTest, lineBreaksAreLineFeedsOrSpaces) {
  const std::string text = "a\nb\r\nc\rd\u0085e\u2028f\u2029g\vh\fi\tj\r";
  EXPECT_EQ(lines(text), "a\nb\nc\nd\ne\nf\ng\nh\ni\tj\n");
  EXPECT_EQ(line(text), "a b c d e f g h i j ");
}

TEST(DisplayedTextTest, malformedBytesAreReplaced) {
  EXPECT_EQ(lines("a\xff"
                  "b\xe2\x80"),
            "a\ufffdb\ufffd\ufffd");
  EXPECT_EQ(lines("\xed\xa0\x80"), "\ufffd\ufffd\ufffd");
}

TEST(DisplayedTextTest, limitCountsDisplayedCodePoints) {
  EXPECT_EQ(displayedText("abc", LineBreaks::stay, 2), "ab");
  EXPECT_EQ(displayedText("abc", LineBreaks::stay, 0), "");
  EXPECT_EQ(displayedText("\u202e\u00e9\r\n\U0001F600x", LineBreaks::stay, 3),
            "\u00e9\n\U0001F600");
}

} // namespace
} // namespace driftmark::test
