// How a new instance ends the older copies of the program.

#include "app/SingleInstance.h"

#include "ports/Application.h"
#include "ports/Bundle.h"
#include "ports/RunningApplications.h"
#include "support/Log.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace driftmark::SingleInstance {

namespace {

std::vector<std::int32_t> otherCopies(const Platform& platform, const std::string& identifier) {
  auto copies = platform.runningApplications.withBundleIdentifier(identifier);
  std::erase(copies, platform.application.processIdentifier());
  return copies;
}

/// Waits until none of the processes runs, or until `gracePeriod` is over.
void awaitEnd(const Platform& platform, const std::vector<std::int32_t>& processes) {
  const auto runs = [&](std::int32_t process) {
    return platform.runningApplications.isRunning(process);
  };
  const Date deadline = later(platform.clock.now(), gracePeriod);
  while (platform.clock.now() < deadline && std::ranges::any_of(processes, runs))
    platform.clock.sleep(pollInterval);
}

} // namespace

void takeOver(const Platform& platform) {
  const auto identifier = platform.bundle.identifier();
  if (!identifier)
    return;
  const auto others = otherCopies(platform, *identifier);
  if (others.empty())
    return;

  log(platform.systemLog,
      {"quitting ", std::to_string(others.size()), " already-running instance(s)"});
  for (const std::int32_t process : others)
    platform.runningApplications.sendTerminate(process);
  awaitEnd(platform, others);
  for (const std::int32_t process : others) {
    if (!platform.runningApplications.isRunning(process))
      continue;
    log(platform.systemLog,
        {"instance ", std::to_string(process), " ignored the quit request; killing it"});
    platform.runningApplications.sendKill(process);
  }
}

} // namespace driftmark::SingleInstance
