// How the two long-running `brctl monitor` processes are started, read, restarted and ended.

#include "monitor/Brctl.h"
#include "monitor/SyncMonitor.h"
#include "support/Weakly.h"

#include <utility>

namespace driftmark {

void SyncMonitor::start() {
  launchMonitor(itemMonitor_);
  launchMonitor(globalMonitor_);
  refreshQuota();
  startPolling();
}

void SyncMonitor::stop() {
  *stopping_ = true;
  const auto terminate = [](const auto& process) {
    if (process)
      process->terminate();
  };
  terminate(itemMonitor_.process);
  terminate(globalMonitor_.process);
  terminate(quotaProcess_);
  terminate(statusProcess_);
}

/// A monitor that cannot be launched is not launched again: only an exit schedules a relaunch.
void SyncMonitor::launchMonitor(MonitorChild& child) {
  auto spawned = spawn(
      child.arguments,
      weakly(shared_from_this(),
             [&child](SyncMonitor& self, std::string_view bytes) { self.ingest(bytes, child); }),
      weakly(shared_from_this(), [&child](SyncMonitor& self) { self.monitorDied(child); }));
  if (!spawned)
    return;
  child.process = std::move(spawned->process);
  child.masterHandle = std::move(spawned->masterHandle);
  log({child.title, " started (pid ", std::to_string(child.process->identifier()), ")"});
}

std::optional<TerminalChild> SyncMonitor::spawn(const std::vector<std::string>& arguments,
                                                ChildProcesses::DataHandler onData,
                                                ChildProcesses::ExitHandler onExit) {
  auto result = ports_.childProcesses.spawn(brctl(arguments), std::move(onData), std::move(onExit));
  if (auto* const child = std::get_if<TerminalChild>(&result))
    return std::move(*child);

  const auto& error = std::get<LaunchError>(result);
  switch (error.stage) {
  case LaunchError::Stage::allocateTerminal:
    log({"failed to allocate pty"});
    break;
  case LaunchError::Stage::openTerminal:
    log({"failed to open pty slave"});
    break;
  case LaunchError::Stage::launch:
    std::string joined;
    for (const std::string& argument : arguments)
      joined += (joined.empty() ? "" : " ") + argument;
    log({"failed to launch brctl ", joined, ": ", error.description});
    break;
  }
  return std::nullopt;
}

void SyncMonitor::ingest(std::string_view chunk, MonitorChild& child) {
  bool changed = false;
  child.lineBuffer.append(
      chunk, [&](std::string_view line) { changed |= (this->*child.parse)(line); },
      [&] { changed |= applyReadLines(); });
  if (changed)
    notify();
}

/// The line buffer keeps the unfinished line of the dead child. The first line of its successor is
/// appended to it.
void SyncMonitor::monitorDied(MonitorChild& child) {
  if (child.masterHandle)
    child.masterHandle->clearReadabilityHandler();
  child.masterHandle.reset();
  child.process.reset();
  if (*stopping_)
    return;
  log({child.title, " exited, restarting in 10s"});
  ports_.mainQueue.after(restartDelay, weakly(shared_from_this(), [&child](SyncMonitor& self) {
                           self.launchMonitor(child);
                         }));
}

} // namespace driftmark
