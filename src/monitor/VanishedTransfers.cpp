// How often the transfers in flight are swept, and that those whose file is gone are dropped.

#include "monitor/SyncMonitor.h"
#include "ports/FileSystem.h"
#include "support/Paths.h"
#include "support/Weakly.h"

#include <algorithm>
#include <functional>

namespace driftmark {

void SyncMonitor::startSweepTimer() {
  const Seconds interval = std::clamp(stalledAfter_ / 3, minSweepInterval, maxSweepInterval);
  sweepTimer_ = ports_.mainQueue.repeat(
      interval, interval / 10, weakly(shared_from_this(), std::mem_fn(&SyncMonitor::sweep)));
}

/// Every sweep notifies, whether or not it drops a transfer: while something is in flight, ages and
/// stalls are redrawn.
void SyncMonitor::sweep() {
  for (auto item = active_.begin(); item != active_.end();) {
    if (ports_.fileSystem.fileExists(item->first)) {
      ++item;
      continue;
    }
    log({"dropped vanished transfer ", lastPathComponent(item->first)});
    item = active_.erase(item);
  }
  if (active_.empty())
    sweepTimer_.reset();
  notify();
}

} // namespace driftmark
