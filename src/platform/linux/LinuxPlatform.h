#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxBundle.h"
#include "platform/linux/desktop/LinuxCloudFiles.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxLoginItem.h"
#include "platform/linux/desktop/LinuxRunningApplications.h"
#include "platform/linux/desktop/LinuxSystemLog.h"
#include "platform/linux/desktop/LinuxText.h"
#include "platform/linux/desktop/LinuxUserDefaults.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/dialogs/LinuxDialogs.h"
#include "platform/linux/menubar/LinuxStatusItem.h"
#include "platform/linux/network/LinuxHttpClient.h"
#include "platform/linux/runloop/LinuxApplication.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/linux/runloop/LinuxSignals.h"
#include "platform/posix/PosixAdapters.h"
#include "platform/posix/children/PosixChildProcesses.h"
#include "ports/Platform.h"

namespace driftmark {

/// All adapters of this front. Lives on the main thread, which runs a QApplication. Destroying
/// it ends all children, waits for background work and drops what waits on the queues; objects of
/// the core that are still held by such work go then. There is one at a time.
class LinuxPlatform {
public:
  /// Throws std::system_error when the system has no descriptors left.
  explicit LinuxPlatform(const SystemRoot& root);
  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;
  ~LinuxPlatform();

  /// The ports, to be used no longer than this object lives.
  Platform ports();

private:
  /// Where the display is closed, Qt ends the process from within the event loop: no function
  /// returns any more, and no object goes.
  void endWithTheProcess();

  /// Lets background work come to its end soon.
  void shutdown();

  PosixClock clock_;
  LinuxSystemLog systemLog_;
  LinuxFileSystem fileSystem_;
  PosixEnvironment environment_;
  LinuxText text_;
  LinuxUserDefaults userDefaults_;
  LinuxBundle bundle_;
  LinuxDialogs dialogs_{bundle_};
  LinuxHttpClient httpClient_{fileSystem_};
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
