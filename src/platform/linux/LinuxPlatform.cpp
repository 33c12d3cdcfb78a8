#include "platform/linux/LinuxPlatform.h"

namespace driftmark {

LinuxPlatform::LinuxPlatform(const SystemRoot& root) : childProcesses_(mainQueue_, root.path()) {}

/// The background queue waits for its tasks, and these may wait for children.
LinuxPlatform::~LinuxPlatform() {
  childProcesses_.shutdown();
}

Platform LinuxPlatform::ports() {
  return {.clock = clock_,
          .mainQueue = mainQueue_,
          .backgroundQueue = backgroundQueue_,
          .childProcesses = childProcesses_,
          .systemLog = systemLog_,
          .fileSystem = fileSystem_,
          .environment = environment_,
          .text = text_};
}

} // namespace driftmark
