#include "monitor/Patterns.h"

#include "support/Regex.h"
#include "support/Strings.h"

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

#ifdef DRIFTMARK_SANITIZED
constexpr int linesEach = 40000;
#else
constexpr int linesEach = 1500000;
#endif

/// Strings made of pieces of a pattern, some with one byte changed, so that many nearly match.
class NearMisses {
public:
  NearMisses(unsigned seed, std::vector<std::string> pieces)
      : random_(seed), pieces_(std::move(pieces)) {}

  std::string next() {
    std::string line;
    for (auto count = 1 + random_() % 8; count > 0; --count)
      line += pieces_[random_() % pieces_.size()];
    if (random_() % 4 == 0)
      mutate(line);
    return line;
  }

private:
  void mutate(std::string& line) {
    const auto at = random_() % line.size();
    // Bytes next to those of the patterns, and any others.
    static const std::string near = "/:;l[m%.09";
    const char byte =
        random_() % 2 == 0 ? near[random_() % near.size()] : static_cast<char>(random_() % 256);
    switch (random_() % 3) {
    case 0:
      line[at] = byte;
      break;
    case 1:
      line.insert(at, 1, byte);
      break;
    default:
      line.erase(at, 1);
      break;
    }
  }

  std::mt19937 random_;
  std::vector<std::string> pieces_;
};

std::string stripped(std::string_view text) {
  std::string storage;
  return std::string(withoutAnsi(text, storage));
}

TEST(PatternsTest, colourSequencesAreRemoved) {
  EXPECT_EQ(stripped("\x1b[1ma\x1b[0mb\x1b[mc\x1b[31;42md"), "abcd");
  EXPECT_EQ(stripped("\x1b[1\x1b[1mm"), "\x1b[1m")
      << "a sequence that only the removal completes is kept";
  EXPECT_EQ(stripped("\x1b[1"), "\x1b[1");
  EXPECT_EQ(stripped("\x1b[2K"), "\x1b[2K");
  EXPECT_EQ(stripped("\x1b\x1b[m"), "\x1b");
  EXPECT_EQ(stripped(""), "");
}

TEST(PatternsTest, textWithoutEscapeIsNotCopied) {
  const std::string text = "plain [1m text";
  std::string storage;
  EXPECT_EQ(withoutAnsi(text, storage).data(), text.data());
}

TEST(PatternsTest, firstNumberBeforeAPercentSignIsThePercentage) {
  EXPECT_EQ(firstPercent(" \u2191 45%"), "45");
  EXPECT_EQ(firstPercent("12.5% 99%"), "12.5");
  EXPECT_EQ(firstPercent("1.2.3%"), "2.3");
  EXPECT_EQ(firstPercent(".5%"), "5");
  EXPECT_EQ(firstPercent("5.%"), std::nullopt);
  EXPECT_EQ(firstPercent("% x% 7%"), "7");
  EXPECT_EQ(firstPercent("45 %"), std::nullopt);
  EXPECT_EQ(firstPercent(""), std::nullopt);
}

TEST(PatternsTest, globalReportIsFoundBehindOneThatIsIncomplete) {
  const auto match =
      firstGlobal("Fraction completed: / Fraction completed: 0.5 / Completed: 1 of 2");
  ASSERT_TRUE(match.has_value());
  EXPECT_EQ(match->fraction, "0.5");
  EXPECT_EQ(match->completed, "1");
  EXPECT_EQ(match->total, "2");
}

TEST(PatternsTest, colourSequencesAreFoundAsByTheRegexEngine) {
  const std::regex pattern(ansiPattern);
  NearMisses lines(1, {"\x1b", "[", "m", "0", ";", "31", "\x1b[", "\x1b[1m", "\x1b[0;3", "K", "a",
                       "\u2601", " ", "\r", std::string(1, '\0')});
  for (int i = 0; i < linesEach; ++i) {
    const std::string line = lines.next();
    ASSERT_EQ(stripped(line), std::regex_replace(line, pattern, ""))
        << testing::PrintToString(line);
  }
}

TEST(PatternsTest, percentagesAreFoundAsByTheRegexEngine) {
  const std::regex pattern(percentPattern);
  NearMisses lines(2, {"%", ".", "0", "7", "42", "100", "3.5", "%%", " ", "..", "\u2191", "x", "9%",
                       ".5%", "1."});
  for (int i = 0; i < linesEach; ++i) {
    const std::string line = lines.next();
    std::smatch match;
    const bool found = std::regex_search(line, match, pattern);
    const auto percent = firstPercent(line);
    ASSERT_EQ(percent.has_value(), found) << testing::PrintToString(line);
    if (found) {
      ASSERT_EQ(percent->data() - line.data(), match.position(1)) << testing::PrintToString(line);
      ASSERT_EQ(*percent, match.str(1)) << testing::PrintToString(line);
    }
  }
}

TEST(PatternsTest, globalReportsAreFoundAsByTheRegexEngine) {
  const std::regex pattern(globalPattern);
  NearMisses lines(3,
                   {"Fraction completed: ", "Fraction", " / Completed: ", " of ", "0.25", "1.0.2",
                    ".", "4", "123", "/ Completed: ", "Fraction completed: 0.5 / Completed: 1 of 2",
                    "Fraction completed: 1 / Completed: ", "Fraction completed: . / Completed: 9",
                    " ", "x", "Fraction completed: 0.2500 / Completed: 25 of 100"});
  int matches = 0;
  for (int i = 0; i < linesEach; ++i) {
    const std::string line = lines.next();
    std::smatch match;
    const bool found = std::regex_search(line, match, pattern);
    const auto global = firstGlobal(line);
    ASSERT_EQ(global.has_value(), found) << testing::PrintToString(line);
    if (!found)
      continue;
    ++matches;
    ASSERT_EQ(global->fraction.data() - line.data(), match.position(1)) << line;
    ASSERT_EQ(global->fraction, match.str(1)) << line;
    ASSERT_EQ(global->completed, match.str(2)) << line;
    ASSERT_EQ(global->total, match.str(3)) << line;
  }
  EXPECT_GT(matches, linesEach / 100) << "too few lines match";
}

} // namespace
} // namespace driftmark::test
