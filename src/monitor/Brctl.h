#pragma once

#include "monitor/SyncMonitor.h"
#include "ports/BackgroundQueue.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace driftmark {

/// Apple's tool with these arguments.
ToolCommand brctl(std::vector<std::string> arguments);

/// Logs why `brctl NAME` gives no report.
void logFailedReport(SystemLog& systemLog, const std::string& name, const std::string& reason);

/// Runs `run`, which is `brctl NAME`, to its end and returns its whole output. Absent when it
/// cannot be launched, which is logged, or when the output is not UTF-8. Blocks; any thread.
std::optional<std::string> readReport(ToolRun& run, const std::string& name, SystemLog& systemLog);

/// Runs `brctl NAME` on the background queue, parses its output there, and calls `deliver(value)`
/// on the main queue. The value is absent when there is no output to parse, or no thread to wait
/// for it, which is logged like a tool that cannot be launched. `deliver` must hold the monitor
/// weakly. The caller keeps the returned run to be able to terminate it.
template <class Parse, class Deliver>
std::shared_ptr<ToolRun> requestReport(const SyncMonitor::Ports& ports, const std::string& name,
                                       Parse parse, Deliver deliver) {
  auto run = ports.childProcesses.prepare(brctl({name}), ToolOutput::capture);
  const auto finish = [&mainQueue = ports.mainQueue, parse,
                       deliver = std::move(deliver)](const std::optional<std::string>& output) {
    mainQueue.async([deliver, value = output ? parse(*output) : std::nullopt]() mutable {
      deliver(std::move(value));
    });
  };
  const auto error = ports.backgroundQueue.async(QualityOfService::utility,
                                                 [&systemLog = ports.systemLog, name, run, finish] {
                                                   finish(readReport(*run, name, systemLog));
                                                 });
  if (error) {
    logFailedReport(ports.systemLog, name, error->description);
    finish(std::nullopt);
  }
  return run;
}

} // namespace driftmark
