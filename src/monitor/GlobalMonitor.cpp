// What a line of the global feed changes.

#include "monitor/GlobalLine.h"
#include "monitor/SyncMonitor.h"
#include "ports/SystemText.h"
#include "support/Weakly.h"

namespace driftmark {

/// True when global activity began or ended with this line.
bool SyncMonitor::parseGlobal(std::string_view line) {
  const auto report = readGlobalLine(line);
  if (!report)
    return false;
  const bool before = globalActivity().has_value();
  globalEvents_.prune(ports_.clock.now());
  if (report->isFinished) {
    globalEvents_.finish(report->total);
  } else {
    if (globalEvents_.report(report->total, ports_.clock.now()))
      log({"global transfer started (", ports_.text.byteCount(report->total), ")"});
    scheduleGlobalExpiry();
    startPolling();
  }
  return globalActivity().has_value() != before;
}

std::optional<GlobalActivity> SyncMonitor::globalActivity() const {
  return globalEvents_.activity(ports_.clock.now());
}

void SyncMonitor::scheduleGlobalExpiry() {
  if (globalExpiryPending_)
    return;
  globalExpiryPending_ = true;
  ports_.mainQueue.after(globalExpiryDelay, weakly(shared_from_this(), [](SyncMonitor& self) {
                           self.globalExpiryPending_ = false;
                           self.globalEvents_.prune(self.ports_.clock.now());
                           self.notify();
                           if (!self.globalEvents_.empty())
                             self.scheduleGlobalExpiry();
                         }));
}

} // namespace driftmark
