#include "platform/macos/MacPlatform.h"

#include <cstdlib>

namespace driftmark {

namespace {

/// The one that lives. The end of a process takes no argument of ours.
MacPlatform* living = nullptr;

} // namespace

/// AppKit ends the process from within the event loop: no function returns any more, and no object
/// goes.
MacPlatform::MacPlatform() {
  living = this;
  std::atexit([] {
    if (living != nullptr)
      living->childProcesses_.shutdown();
  });
}

/// The background queue waits for its tasks, and these may wait for children.
MacPlatform::~MacPlatform() {
  living = nullptr;
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
