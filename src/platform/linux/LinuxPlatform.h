#pragma once

#include "platform/Platform.h"
#include "platform/linux/LinuxBackgroundQueue.h"
#include "platform/linux/LinuxBundle.h"
#include "platform/linux/LinuxCloudFiles.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/linux/LinuxRunningApplications.h"
#include "platform/linux/LinuxSignals.h"
#include "platform/linux/LinuxStatusItem.h"
#include "platform/linux/LinuxSystemLog.h"
#include "platform/linux/LinuxText.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/QtApplication.h"
#include "platform/linux/QtDialogs.h"
#include "platform/linux/QtHttpClient.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/SystemRoot.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/posix/PosixChildProcesses.h"
#include "platform/posix/ProcessEnvironment.h"
#include "platform/posix/SystemClock.h"

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
