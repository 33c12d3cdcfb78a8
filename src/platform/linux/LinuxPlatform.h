#pragma once

#include "platform/linux/SystemRoot.h"
#include "platform/linux/desktop/LinuxBundle.h"
#include "platform/linux/desktop/LinuxCloudFiles.h"
#include "platform/linux/desktop/LinuxFileSystem.h"
#include "platform/linux/desktop/LinuxRunningApplications.h"
#include "platform/linux/desktop/LinuxSystemLog.h"
#include "platform/linux/desktop/LinuxText.h"
#include "platform/linux/desktop/LinuxUserDefaults.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/desktop/XdgLoginItem.h"
#include "platform/linux/dialogs/QtDialogs.h"
#include "platform/linux/menubar/LinuxStatusItem.h"
#include "platform/linux/network/QtHttpClient.h"
#include "platform/linux/runloop/LinuxBackgroundQueue.h"
#include "platform/linux/runloop/LinuxSignals.h"
#include "platform/linux/runloop/QtApplication.h"
#include "platform/linux/runloop/QtMainQueue.h"
#include "platform/posix/ProcessEnvironment.h"
#include "platform/posix/SystemClock.h"
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

  SystemClock clock_;
  LinuxSystemLog systemLog_;
  LinuxFileSystem fileSystem_;
  ProcessEnvironment environment_;
  LinuxText text_;
  LinuxUserDefaults userDefaults_;
  LinuxBundle bundle_;
  QtDialogs dialogs_{bundle_};
  QtHttpClient httpClient_{fileSystem_};
  QtApplication application_;
  LinuxRunningApplications runningApplications_;
  LinuxStatusBar statusBar_;
  XdgLoginItem loginItem_{LinuxBundle::executableOfThisProcess()};
  QtMainQueue mainQueue_;
  LinuxSignals signals_{mainQueue_};
  PosixChildProcesses childProcesses_;
  LinuxWorkspace workspace_{childProcesses_};
  LinuxCloudFiles cloudFiles_{childProcesses_};
  LinuxBackgroundQueue backgroundQueue_;
};

} // namespace driftmark
