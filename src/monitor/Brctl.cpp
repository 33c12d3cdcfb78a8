// How a report of `brctl` is read.

#include "monitor/Brctl.h"

#include "ports/SystemLog.h"
#include "support/Log.h"
#include "support/Utf8.h"

namespace driftmark {

ToolCommand brctl(std::vector<std::string> arguments) {
  return {"/usr/bin/brctl", std::move(arguments)};
}

void logFailedReport(SystemLog& systemLog, const std::string& name, const std::string& reason) {
  log(systemLog, {"brctl ", name, " failed: ", reason});
}

std::optional<std::string> readReport(ToolRun& run, const std::string& name, SystemLog& systemLog) {
  auto outcome = run.run();
  if (const auto* const error = std::get_if<LaunchError>(&outcome)) {
    logFailedReport(systemLog, name, error->description);
    return std::nullopt;
  }
  std::string& output = std::get<ToolResult>(outcome).output;
  if (!isUtf8(output))
    return std::nullopt;
  return std::move(output);
}

} // namespace driftmark
