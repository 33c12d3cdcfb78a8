// What a directory in a report of `brctl status` costs.

#include "Benches.h"
#include "Stopwatch.h"
#include "monitor/StatusReport.h"

#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace driftmark::bench {
namespace {

constexpr std::size_t few = 10'000;
constexpr std::size_t many = 100'000;
constexpr std::size_t rounds = 7;

/// A report of so many directories, with a job each.
std::string reportOf(std::size_t directories) {
  std::string report;
  for (std::size_t number = 0; number < directories; ++number)
    report.append("Under /Users/maren/Library/Mobile Documents/com~apple~CloudDocs/Folder ")
        .append(std::to_string(number))
        .append("\n  > upload{7} active\n");
  return report;
}

void parse(const std::string& report, std::size_t directories) {
  const auto activity = parseStatus(report);
  if (!activity || activity->directories.size() != directories)
    throw std::runtime_error("the report was not read");
}

} // namespace

void benchStatus(Figures& figures, std::ostream& notes) {
  const std::string shortReport = reportOf(few);
  const std::string longReport = reportOf(many);
  std::vector<double> shortTimes;
  std::vector<double> longTimes;
  parse(longReport, many);
  // Both times are of the same number of directories, so that what else runs affects them alike.
  for (std::size_t round = 0; round < rounds; ++round) {
    shortTimes.push_back(seconds([&] {
      for (std::size_t i = 0; i < many / few; ++i)
        parse(shortReport, few);
    }));
    longTimes.push_back(seconds([&] { parse(longReport, many); }));
  }
  const double shortTime = median(shortTimes) * few / many;
  figures["status_at_100000_over_at_10000"] = median(longTimes) / shortTime;
  notes << "status report: " << few << " directories " << shortTime * 1e3 << " ms, " << many
        << " directories " << median(longTimes) * 1e3 << " ms\n";
}

} // namespace driftmark::bench
