#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxAdapters.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/menubar/LinuxStatusItem.h"
#include "platform/linux/network/LinuxHttpClient.h"
#include "platform/linux/runloop/LinuxApplication.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/linux/runloop/LinuxSignals.h"
#include "platform/posix/CrashHandler.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/Platform.h"

namespace driftmark {

/// All adapters of the Linux frontend. Lives on the main thread, beside a QApplication. Its
/// destructor ends all children, waits for background work and drops waiting tasks, with the
/// objects that these hold. At most one exists at a time.
class LinuxPlatform {
public:
  /// Throws std::system_error when the system has no descriptors left.
  explicit LinuxPlatform(const SystemRoot& root);
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;
  ~LinuxPlatform();

  /// The ports; this object outlives their users.
  Platform ports();

private:
  /// Called at exit. When the display is closed, Qt calls exit() inside the event loop: no function
  /// returns, and no object is destroyed.
  void endWithProcess();

  /// Makes background work end soon.
  void shutdown();

  PosixClock clock_;
  LinuxSystemLog systemLog_;
  CrashHandler crashHandler_{systemLog_};
  LinuxFileSystem fileSystem_;
  PosixEnvironment environment_;
  LinuxSystemText text_;
  LinuxUserDefaults userDefaults_;
  LinuxBundle bundle_;
  LinuxDialogs dialogs_{bundle_};
  LinuxHttpClient httpClient_{fileSystem_, LinuxBundle::helperOfThisProcess("driftmark-fetch")};
  LinuxApplication application_;
  LinuxRunningApplications runningApplications_;
  LinuxStatusBar statusBar_;
  LinuxLoginItem loginItem_{LinuxBundle::executableOfThisProcess()};
  LinuxMainQueue mainQueue_;
  LinuxSignals signals_{mainQueue_};
  PosixChildProcesses childProcesses_;
  LinuxWorkspace workspace_{childProcesses_};
  LinuxCloudFiles cloudFiles_{childProcesses_};
  LinuxBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
