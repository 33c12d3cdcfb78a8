#include "platform/linux/desktop/LinuxText.h"

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using Cases = std::vector<std::pair<std::int64_t, std::string>>;

void expectTexts(const Cases& cases) {
  for (const auto& [bytes, text] : cases)
    EXPECT_EQ(LinuxText().byteCount(bytes), text) << bytes;
}

TEST(LinuxText, smallCountsAreInBytes) {
  expectTexts(
      {{0, "Zero KB"}, {1, "1 byte"}, {2, "2 bytes"}, {512, "512 bytes"}, {999, "999 bytes"}});
}

TEST(LinuxText, kilobytesAreWhole) {
  expectTexts({{1'000, "1 KB"},
               {1'499, "1 KB"},
               {1'500, "2 KB"},
               {4'096, "4 KB"},
               {10'000, "10 KB"},
               {999'499, "999 KB"}});
}

TEST(LinuxText, megabytesHaveAtMostOneDecimal) {
  expectTexts({{1'000'000, "1 MB"},
               {1'049'999, "1 MB"},
               {1'050'000, "1.1 MB"},
               {1'200'000, "1.2 MB"},
               {12'345'678, "12.3 MB"},
               {99'950'000, "100 MB"},
               {999'949'999, "999.9 MB"}});
}

TEST(LinuxText, gigabytesAndMoreHaveAtMostTwoDecimals) {
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

TEST(LinuxText, whatRoundsToAThousandIsOneOfTheNextUnit) {
  expectTexts({{999'500, "1 MB"},
               {999'950'000, "1 GB"},
               {999'995'000'000, "1 TB"},
               {999'995'000'000'000, "1 PB"},
               {999'995'000'000'000'000, "1 EB"}});
}

TEST(LinuxText, negativeCountsAreMirrored) {
  expectTexts({{-1, "-1 byte"},
               {-999, "-999 bytes"},
               {-1'500, "-2 KB"},
               {-999'500, "-1 MB"},
               {-1'250'000'000, "-1.25 GB"}});
}

TEST(LinuxText, extremesAreInExabytes) {
  expectTexts({{std::numeric_limits<std::int64_t>::max(), "9.22 EB"},
               {std::numeric_limits<std::int64_t>::min(), "-9.22 EB"}});
}

TEST(LinuxText, localeDoesNotMatter) {
  const std::string before = std::setlocale(LC_ALL, nullptr); // NOLINT(concurrency-mt-unsafe)
  for (const char* const locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"}) {
    std::setlocale(LC_ALL, locale); // NOLINT(concurrency-mt-unsafe)
    expectTexts({{1'250'000'000, "1.25 GB"}});
  }
  std::setlocale(LC_ALL, before.c_str()); // NOLINT(concurrency-mt-unsafe)
}

TEST(LinuxText, addressWithBrokenPartsIsNone) {
  for (const char* const other :
       {"https://example.com:port/", "https://example.com:99999/", "https://[::1/", "a%2", "a%zz",
        "https://example.com/<x>", "https://a\nb/", "1http://example.com/x y"})
    EXPECT_FALSE(LinuxText().isUrl(other)) << other;
}

} // namespace
} // namespace driftmark::test
