// Asks `brctl quota` for the storage that is left.

#include "monitor/Brctl.h"
#include "monitor/SyncMonitor.h"
#include "ports/BackgroundQueue.h"
#include "support/Numbers.h"
#include "support/Weakly.h"

namespace driftmark {

namespace {

/// The report begins with a number of bytes. Only spaces separate words, so a number that is
/// followed by a line end is none.
std::optional<std::int64_t> parseQuota(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  if (start == std::string_view::npos)
    return std::nullopt;
  const std::string_view word = text.substr(start);
  return toInt64(word.substr(0, word.find(' ')));
}

} // namespace

void SyncMonitor::refreshQuota() {
  if (quotaRefreshing_)
    return;
  quotaRefreshing_ = true;
  quotaProcess_ = platform_.childProcesses.prepare(brctl({"quota"}), ToolOutput::capture);
  platform_.backgroundQueue.async(
      QualityOfService::utility,
      [platform = platform_, process = quotaProcess_,
       deliver =
           weakly(shared_from_this(), [](SyncMonitor& self, std::optional<std::int64_t> result) {
             self.quotaArrived(result);
           })] {
        const auto text = runReport(*process, "quota", platform.systemLog);
        platform.mainQueue.async(
            [deliver, result = text ? parseQuota(*text) : std::nullopt] { deliver(result); });
      });
}

void SyncMonitor::quotaArrived(std::optional<std::int64_t> result) {
  quotaRefreshing_ = false;
  quotaProcess_.reset();
  if (!result || result == quotaRemaining_)
    return;
  quotaRemaining_ = result;
  log({"quota remaining ", std::to_string(*result), " bytes"});
  notify();
}

} // namespace driftmark
