// What a line of the global feed changes.

#include "monitor/GlobalLine.h"
#include "monitor/SyncMonitor.h"
#include "ports/SystemText.h"
#include "support/Weakly.h"

namespace driftmark {

bool SyncMonitor::parseGlobal(Lines lines) {
  bool changed = false;
  for (const std::string_view line : lines)
    if (const auto report = readGlobalLine(line))
      changed |= applyGlobal(*report);
  return changed;
}

/// True when global activity began or ended with this report.
bool SyncMonitor::applyGlobal(const GlobalLine& line) {
  const bool before = globalActivity().has_value();
  globalEvents_.prune(ports_.clock.now());
  if (line.isFinished) {
    globalEvents_.finish(line.total);
  } else {
    if (globalEvents_.report(line.total, ports_.clock.now()))
      log({"global transfer started (", ports_.text.byteCount(line.total), ")"});
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
