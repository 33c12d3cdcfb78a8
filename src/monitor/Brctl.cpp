#include "monitor/Brctl.h"

#include "ports/SystemLog.h"
#include "support/TextScan.h"

#include <utility>

namespace driftmark {

ToolCommand brctl(std::vector<std::string> arguments) {
  return {"/usr/bin/brctl", std::move(arguments)};
}

std::optional<std::string> runReport(ToolRun& report, const std::string& name,
                                     SystemLog& systemLog) {
  auto outcome = report.run();
  if (const auto* const error = std::get_if<LaunchError>(&outcome)) {
    systemLog.log("Driftmark: brctl " + name + " failed: " + error->description);
    return std::nullopt;
  }
  std::string& output = std::get<ToolResult>(outcome).output;
  if (!isUtf8(output))
    return std::nullopt;
  return std::move(output);
}

} // namespace driftmark
