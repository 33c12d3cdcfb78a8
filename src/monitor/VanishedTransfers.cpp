// How often the transfers in flight are swept, and that those whose file is gone are dropped.

#include "monitor/SyncMonitor.h"
#include "ports/FileSystem.h"
#include "support/Paths.h"
#include "support/Weakly.h"

#include <algorithm>
#include <functional>
#include <string>

namespace driftmark {

void SyncMonitor::startSweepTimer() {
  const Seconds interval = std::clamp(stalledAfter_ / 3, minSweepInterval, maxSweepInterval);
  sweepTimer_ = ports_.mainQueue.repeat(
      interval, interval / 10, weakly(shared_from_this(), std::mem_fn(&SyncMonitor::sweep)));
}

/// A turn of the timer that comes while a sweep is under way is dropped.
void SyncMonitor::sweep() {
  if (sweeping_)
    return;
  sweeping_ = true;
  active_.beginSweep();
  sweepSlice();
}

/// The file system is asked about every transfer, which can take long: other work of the main queue
/// runs between two slices. Every sweep notifies at its end, whether or not it drops a transfer:
/// while something is in flight, ages and stalls are redrawn.
void SyncMonitor::sweepSlice() {
  const Date begin = ports_.clock.now();
  while (const ActiveItem* const item = active_.nextInSweep()) {
    if (!ports_.fileSystem.fileExists(item->path)) {
      const std::string path = item->path;
      active_.remove(path);
      log({"dropped vanished transfer ", lastPathComponent(path)});
    }
    const Date now = ports_.clock.now();
    if (now < begin || now - begin >= maxSweepSlice) {
      ports_.mainQueue.async(weakly(shared_from_this(), std::mem_fn(&SyncMonitor::sweepSlice)));
      return;
    }
  }
  sweeping_ = false;
  if (active_.empty())
    sweepTimer_.reset();
  notify();
}

} // namespace driftmark
