// In which order the adapters are made, and how children end with the process.

#include "platform/macos/MacPlatform.h"

#include <cstdlib>

namespace driftmark {

namespace {

/// The existing one, for `atexit`, whose function takes no argument.
MacPlatform* current = nullptr;

} // namespace

/// AppKit ends the process inside the event loop: no function returns and no object is destroyed.
/// So the children are ended at exit.
MacPlatform::MacPlatform() {
  current = this;
  std::atexit([] {
    if (current != nullptr)
      current->childProcesses_.shutdown();
  });
}

/// Ends the children first: the background queue waits for its tasks, and these may wait for
/// children.
MacPlatform::~MacPlatform() {
  current = nullptr;
  childProcesses_.shutdown();
}

Platform MacPlatform::ports() {
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
