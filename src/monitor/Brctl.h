#pragma once

#include "ports/ChildProcesses.h"

#include <optional>
#include <string>
#include <vector>

namespace driftmark {

class SystemLog;

/// Apple's tool that reports on iCloud Drive, with `arguments`.
ToolCommand brctl(std::vector<std::string> arguments);

/// Runs a `brctl` report to its end, blocking, and returns what it printed; absent when that is not
/// UTF-8, and, after a log line that calls the report by `name`, when it could not be launched. The
/// exit status does not matter. Any thread.
std::optional<std::string> runReport(ToolRun& report, const std::string& name,
                                     SystemLog& systemLog);

} // namespace driftmark
