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
#include <utility>
#include <vector>

namespace driftmark::SingleInstance {

namespace {

/// Leaves out copies that started later: those end this one, so that the newest of many remains. Of
/// the same instant the larger identifier is the newer copy; an unknown start counts as an older
/// one.
std::vector<std::int32_t> olderCopies(const Platform& platform, const std::string& identifier) {
  const RunningApplications& applications = platform.runningApplications;
  const std::int32_t self = platform.application.processIdentifier();
  const auto ownStart = applications.startTime(self);
  auto copies = applications.withBundleIdentifier(identifier);
  std::erase_if(copies, [&](std::int32_t copy) {
    const auto start = applications.startTime(copy);
    const bool isNewer = start && ownStart && std::pair(*start, copy) > std::pair(*ownStart, self);
    return isNewer || copy == self;
  });
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
  const auto others = olderCopies(platform, *identifier);
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
