#include "monitor/QuotaReport.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

struct ReportCase {
  std::string name;
  std::string report;
  std::optional<std::int64_t> bytes;

  friend std::ostream& operator<<(std::ostream& out, const ReportCase& each) {
    return out << each.name;
  }
};

class QuotaReportTest : public testing::TestWithParam<ReportCase> {};

TEST_P(QuotaReportTest, firstWordIsTheNumberOfBytes) {
  EXPECT_EQ(parseQuota(GetParam().report), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Reports, QuotaReportTest,
    testing::Values(
        ReportCase{"plain", "42 bytes of quota remaining\n", 42},
        ReportCase{"leadingSpaces", "   42 word", 42}, ReportCase{"bareNumber", "42", 42},
        ReportCase{"zero", "0 bytes", 0}, ReportCase{"leadingZeros", "0042 bytes", 42},
        ReportCase{"plusSign", "+42 bytes", 42}, ReportCase{"minusSign", "-42 bytes", -42},
        ReportCase{"largest", "9223372036854775807 bytes",
                   std::numeric_limits<std::int64_t>::max()},
        ReportCase{"smallest", "-9223372036854775808 bytes",
                   std::numeric_limits<std::int64_t>::min()},
        ReportCase{"tooLarge", "9223372036854775808 bytes", std::nullopt},
        ReportCase{"farTooLarge", "99999999999999999999999 bytes", std::nullopt},
        ReportCase{"numberAndLineEnd", "42\n", std::nullopt},
        ReportCase{"numberAndCarriageReturn", "42\r\n", std::nullopt},
        ReportCase{"leadingLineEnd", "\n42 bytes", std::nullopt},
        ReportCase{"leadingTab", "\t42 bytes", std::nullopt},
        ReportCase{"tabAfterTheNumber", "42\tbytes", std::nullopt},
        ReportCase{"thousandsSeparator", "42,000 bytes", std::nullopt},
        ReportCase{"point", "42.0 bytes", std::nullopt},
        ReportCase{"letters", "42GB left", std::nullopt},
        ReportCase{"words", "no quota", std::nullopt}, ReportCase{"empty", "", std::nullopt},
        ReportCase{"spacesOnly", "   ", std::nullopt}, ReportCase{"signOnly", "- 42", std::nullopt},
        ReportCase{"twoSigns", "+-42 bytes", std::nullopt},
        ReportCase{"hexadecimal", "0x42 bytes", std::nullopt},
        ReportCase{"colour", "\x1b[1m42\x1b[0m bytes", std::nullopt},
        ReportCase{"nul", std::string("42\0 bytes", 9), std::nullopt}),
    [](const auto& each) { return each.param.name; });

} // namespace
} // namespace driftmark::test
