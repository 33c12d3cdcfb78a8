// Restarts the sync daemon.

#include "monitor/SyncMonitor.h"

#include <variant>

namespace driftmark {

void SyncMonitor::restartSyncDaemon() {
  log({"restarting iCloud sync daemon (killall bird)"});
  const auto outcome =
      platform_.childProcesses.prepare({"/usr/bin/killall", {"bird"}}, ToolOutput::discard)->run();
  if (const auto* const error = std::get_if<LaunchError>(&outcome))
    log({"killall bird failed: ", error->description});
  else if (const int status = std::get<ToolResult>(outcome).exitStatus; status != 0)
    log({"killall bird exited ", std::to_string(status)});

  const Date now = platform_.clock.now();
  for (auto& [path, item] : active_)
    item.lastUpdate = now;
  notify();
}

} // namespace driftmark
