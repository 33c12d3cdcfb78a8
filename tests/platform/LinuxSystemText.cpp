#include "platform/linux/desktop/LinuxAdapters.h"

#include <chrono>
#include <clocale>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using namespace std::chrono_literals;

using Cases = std::vector<std::pair<std::int64_t, std::string>>;

void expectTexts(const Cases& cases) {
  for (const auto& [bytes, text] : cases)
    EXPECT_EQ(LinuxSystemText().byteCount(bytes), text) << bytes;
}

TEST(LinuxSystemText, smallCountsAreInBytes) {
  expectTexts(
      {{0, "Zero KB"}, {1, "1 byte"}, {2, "2 bytes"}, {512, "512 bytes"}, {999, "999 bytes"}});
}

TEST(LinuxSystemText, kilobytesAreWhole) {
  expectTexts({{1'000, "1 KB"},
               {1'499, "1 KB"},
               {1'500, "2 KB"},
               {4'096, "4 KB"},
               {10'000, "10 KB"},
               {999'499, "999 KB"}});
}

TEST(LinuxSystemText, megabytesHaveAtMostOneDecimal) {
  expectTexts({{1'000'000, "1 MB"},
               {1'049'999, "1 MB"},
               {1'050'000, "1.1 MB"},
               {1'200'000, "1.2 MB"},
               {12'345'678, "12.3 MB"},
               {99'950'000, "100 MB"},
               {999'949'999, "999.9 MB"}});
}

TEST(LinuxSystemText, gigabytesAndMoreHaveAtMostTwoDecimals) {
  expectTexts({{1'000'000'000, "1 GB"},
               {1'004'999'999, "1 GB"},
               {1'005'000'000, "1.01 GB"},
               {1'100'000'000, "1.1 GB"},
               {1'250'000'000, "1.25 GB"},
               {214'748'364'800, "214.75 GB"},
               {999'994'999'999, "999.99 GB"},
               {5'600'000'000'000, "5.6 TB"},
               {7'030'000'000'000'000, "7.03 PB"}});
}

TEST(LinuxSystemText, roundingUpToThousandGivesNextUnit) {
  expectTexts({{999'500, "1 MB"},
               {999'950'000, "1 GB"},
               {999'995'000'000, "1 TB"},
               {999'995'000'000'000, "1 PB"},
               {999'995'000'000'000'000, "1 EB"}});
}

TEST(LinuxSystemText, negativeCountsHaveMinusSign) {
  expectTexts({{-1, "-1 byte"},
               {-999, "-999 bytes"},
               {-1'500, "-2 KB"},
               {-999'500, "-1 MB"},
               {-1'250'000'000, "-1.25 GB"}});
}

TEST(LinuxSystemText, extremesAreInExabytes) {
  expectTexts({{std::numeric_limits<std::int64_t>::max(), "9.22 EB"},
               {std::numeric_limits<std::int64_t>::min(), "-9.22 EB"}});
}

TEST(LinuxSystemText, localeHasNoEffect) {
  const std::string before = std::setlocale(LC_ALL, nullptr); // NOLINT(concurrency-mt-unsafe)
  for (const char* const locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"}) {
    std::setlocale(LC_ALL, locale); // NOLINT(concurrency-mt-unsafe)
    expectTexts({{1'250'000'000, "1.25 GB"}});
  }
  std::setlocale(LC_ALL, before.c_str()); // NOLINT(concurrency-mt-unsafe)
}

TEST(LinuxSystemText, malformedUrlIsRefused) {
  for (const char* const other :
       {"https://example.com:port/", "https://example.com:99999/", "https://[::1/", "a%2", "a%zz",
        "https://example.com/<x>", "https://a\nb/", "1http://example.com/x y"})
    EXPECT_FALSE(LinuxSystemText().isUrl(other)) << other;
}

/// In January: no clock changes to or from summer time within a month before.
const Date now{std::chrono::sys_days(std::chrono::year(2026) / 1 / 15) + 12h};

std::string ago(Date::duration duration) {
  return LinuxSystemText().relativeTime(now - duration, now);
}
std::string ahead(Date::duration duration) {
  return LinuxSystemText().relativeTime(now + duration, now);
}

TEST(LinuxSystemText, relativeTimeIsWholeNumberOfLargestUnit) {
  const std::vector<std::pair<Date::duration, std::string>> cases{
      {1s, "1 second"},   {1999ms, "1 second"},  {59s, "59 seconds"},   {60s, "1 minute"},
      {119s, "1 minute"}, {120s, "2 minutes"},   {3599s, "59 minutes"}, {1h, "1 hour"},
      {3h, "3 hours"},    {24h - 1s, "23 hours"}};
  for (const auto& [duration, text] : cases) {
    EXPECT_EQ(ago(duration), text + " ago");
    EXPECT_EQ(ahead(duration), "in " + text);
  }
}

TEST(LinuxSystemText, lessThanOneSecondIsZeroSeconds) {
  for (const auto duration : {0ms, 1ms, 999ms}) {
    EXPECT_EQ(ago(duration), "in 0 seconds");
    EXPECT_EQ(ahead(duration), "in 0 seconds");
  }
}

TEST(LinuxSystemText, daysAndLongerUnitsFollowCalendar) {
  const auto at = [](int year, unsigned month, unsigned day) {
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    return LinuxSystemText().relativeTime(std::chrono::sys_days(date) + 12h, now);
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

TEST(LinuxSystemText, extremeDatesHaveRelativeTime) {
  EXPECT_FALSE(LinuxSystemText().relativeTime(Date::min(), now).empty());
  EXPECT_FALSE(LinuxSystemText().relativeTime(Date::max(), now).empty());
  EXPECT_EQ(LinuxSystemText().relativeTime(distantPast, Date::min()), "in 0 seconds");
}

TEST(LinuxSystemText, graphemeClustersStayWhole) {
  for (const char* const one :
       {"a", "e\u0301", "g\u0308\u0301", "👍🏽", "👩🏽‍🚀", "👨‍👩‍👧‍👦",
        "🏳️‍🌈", "❤️‍🔥", "👩‍❤️‍💋‍👨", "🇩🇪",
        "🏴󠁧󠁢󠁥󠁮󠁧󠁿", "1️⃣", "각", "กำ", "\r\n"}) {
    const std::string text = std::string(one) + one + "b" + one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 0), "") << one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 1), one) << one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 2), std::string(one) + one) << one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 3), std::string(one) + one + "b") << one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 4), text) << one;
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 60), text) << one;
  }
}

TEST(LinuxSystemText, shortTextIsUnchanged) {
  for (const std::string& text :
       {std::string(), std::string("abc"), std::string("\xFF\xFE"), std::string("a\0b", 3)})
    EXPECT_EQ(LinuxSystemText().firstCharacters(text, 5), text);
}

TEST(LinuxSystemText, invalidBytesAreReplacedInShortenedText) {
  EXPECT_EQ(LinuxSystemText().firstCharacters("a\xFF"
                                              "bcd",
                                              3),
            "a\uFFFDb");
}

} // namespace
} // namespace driftmark::test
