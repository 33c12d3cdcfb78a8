#include "support/TestPlatform.h"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <thread>

namespace driftmark::test {

TestPlatform::~TestPlatform() {
  childProcesses.releaseAll();
  backgroundQueue.join();
  // Waiting tasks may own objects that use the other ports.
  backgroundQueue.clear();
  mainQueue.clear();
}

void TestPlatform::switchOn(Fault fault) {
  using Stage = LaunchError::Stage;
  switch (fault) {
  case Fault::noTerminal:
    return childProcesses.failSpawns({Stage::allocateTerminal, "Out of terminals"});
  case Fault::noTerminalEnd:
    return childProcesses.failSpawns({Stage::openTerminal, "Permission denied"});
  case Fault::noMonitor:
    return childProcesses.failSpawns({Stage::launch, "No such tool"});
  case Fault::noTool:
    return childProcesses.failRuns({Stage::launch, "No such tool"});
  case Fault::failingTool:
    return childProcesses.exitRuns(1);
  case Fault::noDetachedTool:
    return childProcesses.failDetached({Stage::launch, "No such tool"});
  case Fault::noThread:
    return backgroundQueue.refuse(PlatformError{"Out of threads"});
  case Fault::noWalk:
    return cloudFiles.changeWalks([](auto) { return std::nullopt; });
  case Fault::noPathInWalk:
    return cloudFiles.changeWalks([](WalkEntry entry) {
      entry.path.reset();
      return entry;
    });
  case Fault::noValuesInWalk:
    return cloudFiles.changeWalks([](WalkEntry entry) {
      entry.values.reset();
      return entry;
    });
  case Fault::noEviction:
    return cloudFiles.failEvictions("The file is in use");
  case Fault::noAnswer:
    return dialogs.leaveAllUnanswered();
  case Fault::unknownFile:
    return fileSystem.pretendNothingExists();
  case Fault::noTemporaryFolder:
    return fileSystem.failTemporaryDirectory("The folder is not private");
  case Fault::noNewFolder:
    return fileSystem.fail("create", "The disk is full");
  case Fault::noRemoval:
    return fileSystem.fail("remove", "Permission denied");
  case Fault::noMove:
    return fileSystem.fail("move", "The disk is full");
  case Fault::noTrash:
    return fileSystem.fail("trash", "There is no trash");
  case Fault::noReply:
    return httpClient.failFetches({"The connection was lost"});
  case Fault::noDownload:
    return httpClient.failDownloads({"The connection was lost"});
  case Fault::noRegistration:
    return loginItem.fail("Not allowed");
  case Fault::noSignalSource:
    return signals.refuseSources();
  case Fault::lostSignal:
    return runningApplications.loseSignals();
  case Fault::noStatusItem:
    return statusBar.decline();
  case Fault::noSymbol:
    return statusBar.forgetSymbols();
  case Fault::noStoredSetting:
    return userDefaults.refuseChanges();
  case Fault::noBundle:
    return bundle.forgetInformation();
  }
}

void TestPlatform::settle() {
  constexpr int maxRounds = 10'000; // far more than any test needs
  for (int round = 0; round < maxRounds; ++round)
    if (backgroundQueue.runAll() + mainQueue.runAll() == 0)
      return;
  throw std::runtime_error("the background queue and the main queue keep handing each other tasks");
}

bool TestPlatform::runUntil(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  for (;;) {
    settle();
    if (done())
      return true;
    if (std::chrono::steady_clock::now() > deadline)
      return false;
    if (!mainQueue.advanceToNext())
      std::this_thread::yield();
  }
}

} // namespace driftmark::test
