#include "platform/linux/LinuxPlatform.h"

#include <cstdlib>

namespace driftmark {

namespace {

/// The one that lives. The end of a process takes no argument of ours.
LinuxPlatform* living = nullptr;

} // namespace

LinuxPlatform::LinuxPlatform(const SystemRoot& root)
    : fileSystem_(root.path()), userDefaults_(systemLog_),
      bundle_(LinuxBundle::ofThisProcess(root.path())), runningApplications_(root),
      childProcesses_(mainQueue_, root.path()) {
  living = this;
  std::atexit([] {
    if (living != nullptr)
      living->endWithTheProcess();
  });
}

/// The background queue waits for its tasks, and these may wait for children.
LinuxPlatform::~LinuxPlatform() {
  living = nullptr;
  shutdown();
}

void LinuxPlatform::endWithTheProcess() {
  application_.willTerminate();
  shutdown();
}

void LinuxPlatform::shutdown() {
  cloudFiles_.shutdown();
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
          .text = text_,
          .httpClient = httpClient_,
          .dialogs = dialogs_,
          .userDefaults = userDefaults_,
          .bundle = bundle_,
          .application = application_,
          .runningApplications = runningApplications_,
          .signals = signals_,
          .statusBar = statusBar_,
          .workspace = workspace_,
          .loginItem = loginItem_,
          .cloudFiles = cloudFiles_};
}

} // namespace driftmark
