// How the program starts and ends.

#include "app/Program.h"

#include "core/MonitorTest.h"

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

/// The whole program on the test platform; `during` is called while it runs.
class ProgramTest : public testing::Test {
protected:
  int run(std::function<void()> during) {
    platform.application.onRun([this, during = std::move(during)] {
      platform.application.delegate()->applicationDidFinishLaunching();
      during();
      platform.application.delegate()->applicationWillTerminate();
    });
    return runProgram(platform.platform());
  }

  TestPlatform platform;
};

TEST_F(ProgramTest, programStartsAsAccessoryWithStatusItem) {
  EXPECT_EQ(run([&] {
              EXPECT_TRUE(platform.application.isAccessory());
              EXPECT_TRUE(platform.statusBar.hasItem());
              EXPECT_THAT(platform.childProcesses.children(), testing::SizeIs(2));
            }),
            0);
}

TEST_F(ProgramTest, olderCopyEndsBeforeStatusItemIsShown) {
  platform.bundle.setIdentifier("com.example.driftmark");
  platform.runningApplications.add("com.example.driftmark", 17, Seconds(1));
  platform.application.onRun([&] {
    EXPECT_FALSE(platform.runningApplications.isRunning(17));
    EXPECT_FALSE(platform.statusBar.hasItem());
  });
  EXPECT_EQ(runProgram(platform.platform()), 0);
  EXPECT_THAT(platform.runningApplications.take(), ElementsAre("terminate 17"));
}

TEST_F(ProgramTest, signalsAskForOrderlyEnd) {
  run([&] {
    for (const QuitSignal signal : {QuitSignal::terminate, QuitSignal::interrupt}) {
      EXPECT_TRUE(platform.signals.isIgnored(signal));
      const int before = platform.application.terminateRequests();
      platform.signals.send(signal);
      platform.mainQueue.runAll();
      EXPECT_EQ(platform.application.terminateRequests(), before + 1);
    }
  });
  EXPECT_FALSE(platform.signals.isWatched(QuitSignal::terminate));
}

TEST_F(ProgramTest, signalThatCannotBeCaughtKeepsItsDefaultAction) {
  platform.signals.refuseSources();
  run([&] {
    for (const QuitSignal signal : {QuitSignal::terminate, QuitSignal::interrupt}) {
      EXPECT_FALSE(platform.signals.isIgnored(signal));
      EXPECT_FALSE(platform.signals.isWatched(signal));
    }
  });
  EXPECT_THAT(platform.systemLog.lines(),
              IsSupersetOf({"Driftmark: cannot catch SIGTERM: it ends the program at once",
                            "Driftmark: cannot catch SIGINT: it ends the program at once"}));
}

TEST_F(ProgramTest, endOfApplicationEndsChildren) {
  run([] {});
  ASSERT_THAT(platform.childProcesses.children(), testing::SizeIs(2));
  for (const auto& child : platform.childProcesses.children())
    EXPECT_EQ(child->terminateRequests(), 1);
}

TEST_F(ProgramTest, programThatMovedStartsNothing) {
  platform.bundle.setPath("/Users/ada/Downloads/Driftmark.app");
  platform.fileSystem.add("/Users/ada/Downloads/Driftmark.app/Contents/Info.plist");
  platform.dialogs.answer(0);
  run([&] {
    EXPECT_EQ(platform.application.terminateRequests(), 1);
    EXPECT_FALSE(platform.statusBar.hasItem());
    EXPECT_THAT(platform.mainQueue.timers(), IsEmpty());
  });
  EXPECT_THAT(platform.childProcesses.children(), IsEmpty());
}

/// SIGTERM closes the offer as it closes every modal window: without an answer.
TEST_F(ProgramTest, quitDuringOfferToMoveStartsNothing) {
  platform.bundle.setPath("/Users/ada/Downloads/Driftmark.app");
  platform.dialogs.leaveUnanswered();
  platform.dialogs.onShow([&](const Alert&) {
    platform.signals.send(QuitSignal::terminate);
    platform.mainQueue.runAll();
  });
  run([&] {
    EXPECT_EQ(platform.application.terminateRequests(), 1);
    EXPECT_FALSE(platform.statusBar.hasItem());
    EXPECT_THAT(platform.mainQueue.timers(), IsEmpty());
  });
  EXPECT_THAT(platform.childProcesses.children(), IsEmpty());
  EXPECT_THAT(platform.childProcesses.runs(), IsEmpty());
}

TEST_F(ProgramTest, quitWhileFailedMoveIsReportedStartsNothing) {
  platform.bundle.setPath("/Users/ada/Downloads/Driftmark.app");
  platform.fileSystem.add("/Users/ada/Downloads/Driftmark.app/Contents/Info.plist");
  platform.childProcesses.failAllLaunches({LaunchError::Stage::launch, "No such tool"});
  platform.dialogs.answer(0);
  platform.dialogs.leaveUnanswered();
  platform.dialogs.onShow([&](const Alert& alert) {
    if (alert.messageText == "Could not move Driftmark")
      platform.application.terminate();
  });
  run([&] { EXPECT_FALSE(platform.statusBar.hasItem()); });
  EXPECT_THAT(platform.childProcesses.spawnAttempts(), IsEmpty());
}

TEST_F(ProgramTest, programThatStaysShowsStatusItem) {
  platform.bundle.setPath("/Users/ada/Downloads/Driftmark.app");
  run([&] { EXPECT_TRUE(platform.statusBar.hasItem()); });
}

} // namespace
} // namespace driftmark::test
