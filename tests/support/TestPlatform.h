#pragma once

#include "ports/Platform.h"
#include "support/TestApplication.h"
#include "support/TestBackgroundQueue.h"
#include "support/TestBundle.h"
#include "support/TestChildProcesses.h"
#include "support/TestClock.h"
#include "support/TestCloudFiles.h"
#include "support/TestDialogs.h"
#include "support/TestEnvironment.h"
#include "support/TestFileSystem.h"
#include "support/TestHttpClient.h"
#include "support/TestLoginItem.h"
#include "support/TestMainQueue.h"
#include "support/TestRunningApplications.h"
#include "support/TestSignals.h"
#include "support/TestStatusBar.h"
#include "support/TestSystemLog.h"
#include "support/TestSystemText.h"
#include "support/TestUserDefaults.h"
#include "support/TestWorkspace.h"

#include <functional>

namespace driftmark::test {

/// A failure that a port reports. The values of one port stand together.
enum class Fault {
  noTerminal, ///< `ChildProcesses`
  noTerminalEnd,
  noMonitor,
  noTool,
  failingTool,
  noDetachedTool,
  noThread, ///< `BackgroundQueue`
  noWalk,   ///< `CloudFiles`
  noPathInWalk,
  noValuesInWalk,
  noEviction,
  noAnswer,    ///< `Dialogs`
  unknownFile, ///< `FileSystem`
  noTemporaryFolder,
  noNewFolder,
  noRemoval,
  noMove,
  noTrash,
  noReply, ///< `HttpClient`
  noDownload,
  noRegistration, ///< `LoginItem`
  noSignalSource, ///< `Signals`
  lostSignal,     ///< `RunningApplications`
  noStatusItem,   ///< `StatusBar`
  noSymbol,
  noStoredSetting, ///< `UserDefaults`
  noBundle,        ///< `Bundle`
};

/// Every port in memory, under the test's control. Make it before the objects that use it.
class TestPlatform {
public:
  TestPlatform() = default;
  TestPlatform(const TestPlatform&) = delete;
  TestPlatform& operator=(const TestPlatform&) = delete;
  ~TestPlatform();

  /// The ports, as the core takes them.
  Platform platform() { return platform(mainQueue, childProcesses); }

  /// The ports with these two in place of the fakes.
  Platform platform(MainQueue& queue, ChildProcesses& children) {
    return {.clock = clock,
            .mainQueue = queue,
            .backgroundQueue = backgroundQueue,
            .childProcesses = children,
            .systemLog = systemLog,
            .fileSystem = fileSystem,
            .environment = environment,
            .text = text,
            .httpClient = httpClient,
            .dialogs = dialogs,
            .userDefaults = userDefaults,
            .bundle = bundle,
            .application = application,
            .runningApplications = runningApplications,
            .signals = signals,
            .statusBar = statusBar,
            .workspace = workspace,
            .loginItem = loginItem,
            .cloudFiles = cloudFiles};
  }

  /// Makes the port of this failure fail in this way from now on, as often as it is asked.
  void switchOn(Fault fault);

  /// Runs background and main-queue tasks, without moving time, until none is left. Throws
  /// when the two queues keep handing each other tasks.
  void settle();

  /// Moves virtual time from event to event until `done`; yields to other threads while no task
  /// waits. False after ten real seconds.
  bool runUntil(const std::function<bool()>& done);

  TestClock clock;
  TestSystemLog systemLog;
  TestFileSystem fileSystem;
  TestEnvironment environment;
  TestSystemText text;
  TestHttpClient httpClient;
  TestDialogs dialogs;
  TestUserDefaults userDefaults;
  TestBundle bundle;
  TestApplication application;
  TestRunningApplications runningApplications{clock};
  TestStatusBar statusBar;
  TestWorkspace workspace;
  TestLoginItem loginItem;
  TestCloudFiles cloudFiles;
  TestMainQueue mainQueue{clock};
  TestSignals signals{mainQueue};
  TestChildProcesses childProcesses{mainQueue};
  TestBackgroundQueue backgroundQueue;
};

} // namespace driftmark::test
