#pragma once

#include "monitor/SyncMonitor.h"
#include "ports/BackgroundQueue.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace driftmark {

/// Apple's tool with these arguments.
ToolCommand brctl(std::vector<std::string> arguments);

/// Runs `run`, which is `brctl NAME`, to its end and returns its whole output. Absent when it
/// cannot be launched, which is logged, or when the output is not UTF-8. Blocks; any thread.
std::optional<std::string> readReport(ToolRun& run, const std::string& name, SystemLog& systemLog);

/// Runs `brctl NAME` on the background queue, parses its output there, and calls `deliver(value)`
/// on the main queue. The value is absent when there is no output to parse. `deliver` must hold the
/// monitor weakly. The caller keeps the returned run to be able to terminate it.
template <class Value, class Deliver>
std::shared_ptr<ToolRun> requestReport(const SyncMonitor::Ports& ports, const std::string& name,
                                       std::optional<Value> (*parse)(std::string_view),
                                       Deliver deliver) {
  auto run = ports.childProcesses.prepare(brctl({name}), ToolOutput::capture);
  ports.backgroundQueue.async(
      QualityOfService::utility, [ports, name, parse, run, deliver = std::move(deliver)] {
        const auto output = readReport(*run, name, ports.systemLog);
        ports.mainQueue.async(
            [deliver, value = output ? parse(*output) : std::nullopt] { deliver(value); });
      });
  return run;
}

} // namespace driftmark
