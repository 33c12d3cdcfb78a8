#include "replay/ReplayPlatform.h"

#include <iostream>

namespace driftmark {

void ReplayLog::log(std::string_view line) {
  if (shown_)
    std::cerr << std::string(line) + '\n';
}

ReplayPlatform::ReplayPlatform(const Options& options)
    : log_(options.showLog), processes_(mainQueue_, options.systemRoot),
      children_(processes_, options.onAllEnded) {}

/// The background queue waits for its tasks, and these may wait for children.
ReplayPlatform::~ReplayPlatform() {
  processes_.shutdown();
}

SyncMonitor::Ports ReplayPlatform::ports() {
  return {.clock = clock_,
          .mainQueue = mainQueue_,
          .backgroundQueue = backgroundQueue_,
          .childProcesses = children_,
          .systemLog = log_,
          .fileSystem = fileSystem_,
          .environment = environment_,
          .text = text_};
}

} // namespace driftmark
