#pragma once

#include "platform/macos/MacAdapters.h"
#include "platform/macos/MacApplication.h"
#include "platform/macos/MacHttpClient.h"
#include "platform/macos/MacMainQueue.h"
#include "platform/macos/MacStatusItem.h"
#include "platform/posix/CrashHandler.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/Platform.h"

namespace driftmark {

/// All adapters of this frontend. Main thread only. Destroying it ends all children, waits for
/// background work and drops the tasks on the queues, with the objects of the core that they hold.
/// There is one at a time.
class MacPlatform {
public:
  /// Throws std::system_error when the system has no descriptors left.
  MacPlatform();
  ~MacPlatform();

  /// The ports, to be used no longer than this object lives.
  Platform ports();

private:
  PosixClock clock_;
  MacSystemLog systemLog_;
  CrashHandler crashHandler_{systemLog_};
  MacFileSystem fileSystem_;
  PosixEnvironment environment_;
  MacSystemText text_;
  MacUserDefaults userDefaults_;
  MacBundle bundle_;
  MacDialogs dialogs_;
  MacRunningApplications runningApplications_;
  MacStatusBar statusBar_;
  MacWorkspace workspace_;
  MacLoginItem loginItem_;
  MacCloudFiles cloudFiles_;
  MacMainQueue mainQueue_;
  MacHttpClient httpClient_; ///< its handlers post to the main queue, on the system's threads
  MacApplication application_{mainQueue_};
  MacSignals signals_{mainQueue_};
  PosixChildProcesses childProcesses_{mainQueue_, ""};
  MacBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
