// When a transfer counts as stalled, when a restart of the sync daemon is offered, and what the
// restart does.

#include "monitor/SyncMonitor.h"
#include "ports/Environment.h"
#include "support/Numbers.h"

#include <algorithm>
#include <variant>

namespace driftmark {

/// The environment variable counts when it is a number above 0.
Seconds SyncMonitor::stallThreshold(const Environment& environment) {
  const auto text = environment.variable("DRIFTMARK_STALL_SECS");
  const auto seconds = text ? toDouble(*text) : std::nullopt;
  return seconds && *seconds > 0 ? Seconds(*seconds) : defaultStalledAfter;
}

bool SyncMonitor::isStalled(const ActiveItem& item) const {
  return Seconds(ports_.clock.now() - item.lastUpdate) > stalledAfter_;
}

std::optional<double> SyncMonitor::longestStall() const {
  std::optional<double> longest;
  for (const auto& [path, item] : active_) {
    const Seconds elapsed = ports_.clock.now() - item.lastUpdate;
    if (elapsed > stalledAfter_)
      longest = std::max(longest.value_or(elapsed.count()), elapsed.count());
  }
  return longest;
}

bool SyncMonitor::shouldOfferRestart() const {
  return Seconds(longestStall().value_or(0)) > 2 * stalledAfter_;
}

void SyncMonitor::restartSyncDaemon() {
  log({"restarting iCloud sync daemon (killall bird)"});
  const auto outcome =
      ports_.childProcesses.prepare({"/usr/bin/killall", {"bird"}}, ToolOutput::discard)->run();
  if (const auto* const error = std::get_if<LaunchError>(&outcome))
    log({"killall bird failed: ", error->description});
  else if (const int status = std::get<ToolResult>(outcome).exitStatus; status != 0)
    log({"killall bird exited ", std::to_string(status)});

  const Date now = ports_.clock.now();
  for (auto& [path, item] : active_)
    item.lastUpdate = now;
  notify();
}

} // namespace driftmark
