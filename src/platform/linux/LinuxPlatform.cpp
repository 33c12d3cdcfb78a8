// Which adapters the Linux frontend uses, and how they are shut down.

#include "platform/linux/LinuxPlatform.h"

#include <cstdlib>

namespace driftmark {

namespace {

/// The one instance. An exit handler receives no argument.
LinuxPlatform* instance = nullptr;

} // namespace

LinuxPlatform::LinuxPlatform(const SystemRoot& root)
    : fileSystem_(root.path()), userDefaults_(systemLog_),
      bundle_(LinuxBundle::ofThisProcess(root.path())), runningApplications_(root),
      childProcesses_(mainQueue_, root.path()) {
  instance = this;
  std::atexit([] {
    if (instance != nullptr)
      instance->endWithProcess();
  });
}

/// The background queue waits for its tasks, and those may wait for children.
LinuxPlatform::~LinuxPlatform() {
  instance = nullptr;
  shutdown();
}

void LinuxPlatform::endWithProcess() {
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
