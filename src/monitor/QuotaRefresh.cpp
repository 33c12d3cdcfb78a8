// When `brctl quota` is run, and what its answer changes.

#include "monitor/Brctl.h"
#include "monitor/QuotaReport.h"
#include "monitor/SyncMonitor.h"
#include "support/Weakly.h"

#include <functional>

namespace driftmark {

void SyncMonitor::refreshQuota() {
  if (quotaRefreshing_)
    return;
  quotaRefreshing_ = true;
  quotaProcess_ =
      requestReport(ports_, "quota", parseQuota,
                    weakly(shared_from_this(), std::mem_fn(&SyncMonitor::quotaArrived)));
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
