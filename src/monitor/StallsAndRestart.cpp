// After which time a transfer is stalled (`Transfers` finds those that are), when a restart of the
// sync daemon is offered, and what the restart does.

#include "monitor/SyncMonitor.h"
#include "ports/Environment.h"
#include "support/Numbers.h"

#include <variant>

namespace driftmark {

/// The environment variable counts when it is a number above 0.
Seconds SyncMonitor::stallThreshold(const Environment& environment) {
  const auto text = environment.variable("DRIFTMARK_STALL_SECS");
  const auto seconds = text ? toDouble(*text) : std::nullopt;
  return seconds && *seconds > 0 ? Seconds(*seconds) : defaultStalledAfter;
}

bool SyncMonitor::isStalled(const ActiveItem& item) const {
  return active_.isStalled(item, ports_.clock.now());
}

std::size_t SyncMonitor::stalledCount() const {
  return active_.stalledCount(ports_.clock.now());
}

std::optional<double> SyncMonitor::longestStall() const {
  return active_.longestStall(ports_.clock.now());
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

  active_.restartClocks(ports_.clock.now());
  notify();
}

} // namespace driftmark
