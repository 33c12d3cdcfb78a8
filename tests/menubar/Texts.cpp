// Times and characters as the system words and counts them.

#include "platform/linux/desktop/RelativeTime.h"
#include "platform/linux/menubar/Characters.h"

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::chrono_literals;

/// The middle of a January, a month before no clock is put forward or back.
const Date now{std::chrono::sys_days(std::chrono::year(2026) / 1 / 15) + 12h};

std::string ago(Date::duration duration) {
  return relativeTime(now - duration, now);
}
std::string ahead(Date::duration duration) {
  return relativeTime(now + duration, now);
}

TEST(RelativeTime, isInTheLargestUnitCutToAWholeNumber) {
  const std::vector<std::pair<Date::duration, std::string>> cases{
      {1s, "1 second"},   {1999ms, "1 second"},  {59s, "59 seconds"},   {60s, "1 minute"},
      {119s, "1 minute"}, {120s, "2 minutes"},   {3599s, "59 minutes"}, {1h, "1 hour"},
      {3h, "3 hours"},    {24h - 1s, "23 hours"}};
  for (const auto& [duration, text] : cases) {
    EXPECT_EQ(ago(duration), text + " ago");
    EXPECT_EQ(ahead(duration), "in " + text);
  }
}

TEST(RelativeTime, lessThanASecondIsNone) {
  for (const auto duration : {0ms, 1ms, 999ms}) {
    EXPECT_EQ(ago(duration), "in 0 seconds");
    EXPECT_EQ(ahead(duration), "in 0 seconds");
  }
}

TEST(RelativeTime, daysAndMoreAreThoseOfTheCalendar) {
  const auto at = [](int year, unsigned month, unsigned day) {
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    return relativeTime(std::chrono::sys_days(date) + 12h, now);
  };
  EXPECT_EQ(at(2026, 1, 14), "1 day ago");
  EXPECT_EQ(at(2026, 1, 9), "6 days ago");
  EXPECT_EQ(at(2026, 1, 8), "1 week ago");
  EXPECT_EQ(at(2025, 12, 16), "4 weeks ago");
  EXPECT_EQ(at(2025, 12, 15), "1 month ago");
  EXPECT_EQ(at(2025, 1, 16), "11 months ago");
  EXPECT_EQ(at(2025, 1, 15), "1 year ago");
  EXPECT_EQ(at(2000, 1, 15), "26 years ago");
  EXPECT_EQ(at(2026, 1, 16), "in 1 day");
  EXPECT_EQ(at(2026, 2, 14), "in 4 weeks");
  EXPECT_EQ(at(2026, 2, 15), "in 1 month");
  EXPECT_EQ(at(2028, 1, 15), "in 2 years");
}

TEST(RelativeTime, extremesHaveAText) {
  EXPECT_FALSE(relativeTime(Date::min(), now).empty());
  EXPECT_FALSE(relativeTime(Date::max(), now).empty());
  EXPECT_EQ(relativeTime(distantPast, Date::min()), "in 0 seconds");
}

TEST(Characters, areWhatAPersonCounts) {
  for (const char* const one :
       {"a", "e\u0301", "g\u0308\u0301", "👍🏽", "👩🏽‍🚀", "👨‍👩‍👧‍👦",
        "🏳️‍🌈", "❤️‍🔥", "👩‍❤️‍💋‍👨", "🇩🇪",
        "🏴󠁧󠁢󠁥󠁮󠁧󠁿", "1️⃣", "각", "กำ", "\r\n"}) {
    const std::string text = std::string(one) + one + "b" + one;
    EXPECT_EQ(firstCharacters(text, 0), "") << one;
    EXPECT_EQ(firstCharacters(text, 1), one) << one;
    EXPECT_EQ(firstCharacters(text, 2), std::string(one) + one) << one;
    EXPECT_EQ(firstCharacters(text, 3), std::string(one) + one + "b") << one;
    EXPECT_EQ(firstCharacters(text, 4), text) << one;
    EXPECT_EQ(firstCharacters(text, 60), text) << one;
  }
}

TEST(Characters, aShortTextIsLeftAlone) {
  for (const std::string& text :
       {std::string(), std::string("abc"), std::string("\xFF\xFE"), std::string("a\0b", 3)})
    EXPECT_EQ(firstCharacters(text, 5), text);
}

TEST(Characters, bytesThatAreNoTextAreReplaced) {
  EXPECT_EQ(firstCharacters("a\xFF"
                            "bcd",
                            3),
            "a\uFFFDb");
}

} // namespace
} // namespace driftmark::test
