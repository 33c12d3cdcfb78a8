// What the items of the menu do when they are chosen.

#include "core/ControllerTest.h"

#include <chrono>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Arguments killall{"bird"};

class MenuActionsTest : public ControllerTest {
protected:
  void SetUp() override { show(); }

  void choose(const std::string& title) {
    open();
    platform.statusBar.choose(title);
    platform.settle();
  }

  /// Starts `count` uploads that stall long enough for the restart to be offered.
  void stallUploads(int count) {
    for (int i = 0; i < count; ++i)
      upload("/stalled " + std::to_string(i));
    advance(630);
    takeLog();
  }

  static Alert restartQuestion(const std::string& count) {
    return {"Restart iCloud Sync?",
            count + " This restarts the iCloud Drive sync process (bird); it relaunches on its own "
                    "and resumes pending transfers. No files are changed. If the stall is really a "
                    "network problem, restarting will not help.",
            {"Restart Sync", "Cancel"}};
  }
};

TEST_F(MenuActionsTest, fileRowRevealsFile) {
  upload("/Reports/q3.pdf");
  choose("q3.pdf");
  EXPECT_THAT(platform.workspace.take(), ElementsAre("reveal " + full("/Reports/q3.pdf")));
}

TEST_F(MenuActionsTest, missingFileIsStillRevealed) {
  upload("/a");
  open();
  platform.fileSystem.remove(full("/a"));
  finish("/a");
  platform.statusBar.choose("a");
  EXPECT_THAT(platform.workspace.take(), ElementsAre("reveal " + full("/a")));
}

TEST_F(MenuActionsTest, driveIsOpened) {
  choose("Open iCloud Drive");
  EXPECT_THAT(platform.workspace.take(),
              ElementsAre("open /Users/ada/Library/Mobile Documents/com~apple~CloudDocs"));
}

TEST_F(MenuActionsTest, quitTerminatesApplication) {
  choose("Quit Driftmark");
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

TEST_F(MenuActionsTest, updatesAreCheckedOnRequest) {
  choose("Check for Updates…");
  ASSERT_EQ(platform.httpClient.fetches().size(), 1U);
  platform.httpClient.fail({"No network."});
  platform.settle();
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(Alert{"Could not check for updates", "No network.", {}}));
}

TEST_F(MenuActionsTest, aboutPanelShowsCredits) {
  choose("About Driftmark");
  EXPECT_EQ(platform.application.activations(), 1);
  ASSERT_EQ(platform.dialogs.aboutPanels().size(), 1U);
  EXPECT_THAT(platform.dialogs.aboutPanels()[0],
              testing::MatchesRegex(
                  "Menu bar monitor for iCloud Drive sync activity\nhttps://[a-z.]+/driftmark/"));
}

TEST_F(MenuActionsTest, menuItemsDoNothingAfterControllerIsReleased) {
  upload("/a");
  open();
  controller.reset();
  platform.statusBar.choose("a");
  platform.statusBar.choose("Open iCloud Drive");
  EXPECT_THAT(platform.workspace.take(), IsEmpty());
}

// ---- restart ----

TEST_F(MenuActionsTest, restartAsksFirst) {
  stallUploads(2);
  choose("Restart iCloud Sync…");
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(restartQuestion("2 transfers have made no progress for a while.")));
  EXPECT_EQ(platform.application.activations(), 1);
  EXPECT_THAT(platform.childProcesses.runs(killall), IsEmpty());
  EXPECT_EQ(statusBar().toolTip(), "iCloud Drive: attention needed");
}

TEST_F(MenuActionsTest, restartCountsStalledTransfersWhenChosen) {
  stallUploads(1);
  open();
  platform.statusBar.choose("Restart iCloud Sync…");
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(restartQuestion("1 transfer has made no progress for a while.")));
  finish("/stalled 0");
  platform.statusBar.choose("Restart iCloud Sync…");
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(restartQuestion("0 transfers have made no progress for a while.")));
}

TEST_F(MenuActionsTest, restartThatIsNotConfirmedEndsNothing) {
  stallUploads(1);
  platform.dialogs.leaveUnanswered();
  choose("Restart iCloud Sync…");
  platform.dialogs.answer(1);
  choose("Restart iCloud Sync…");
  EXPECT_EQ(platform.dialogs.take().size(), 2U);
  EXPECT_THAT(platform.childProcesses.runs(killall), IsEmpty());
  EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(MenuActionsTest, liveTransfersDoNotCountForTheRestart) {
  stallUploads(1);
  upload("/live");
  choose("Restart iCloud Sync…");
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(restartQuestion("1 transfer has made no progress for a while.")));
}

TEST_F(MenuActionsTest, confirmedRestartEndsDaemonAndForgetsStall) {
  stallUploads(1);
  platform.dialogs.answer(0);
  choose("Restart iCloud Sync…");
  ASSERT_EQ(platform.childProcesses.runs(killall).size(), 1U);
  const auto run = platform.childProcesses.runs(killall)[0];
  EXPECT_EQ(run->command().executable, "/usr/bin/killall");
  EXPECT_EQ(run->output(), ToolOutput::discard);
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: restarting iCloud sync daemon (killall bird)",
                                     "Driftmark: state -> uploading"));
  EXPECT_EQ(statusBar().toolTip(), "iCloud Drive: uploading");
}

// ---- launch at login ----

TEST_F(MenuActionsTest, loginItemIsSwitchedOnAndOff) {
  choose("Launch at Login");
  EXPECT_EQ(platform.loginItem.status(), LoginItem::Status::enabled);
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: launch at login enabled"));
  choose("Launch at Login");
  EXPECT_EQ(platform.loginItem.status(), LoginItem::Status::notRegistered);
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: launch at login disabled"));
}

TEST_F(MenuActionsTest, loginItemAwaitingApprovalIsRegisteredAgain) {
  platform.loginItem.setStatus(LoginItem::Status::requiresApproval);
  choose("Launch at Login");
  EXPECT_EQ(platform.loginItem.registrations(), 1);
  EXPECT_EQ(platform.loginItem.unregistrations(), 0);
}

TEST_F(MenuActionsTest, loginItemFailureIsOnlyLogged) {
  platform.loginItem.fail("Not permitted.");
  choose("Launch at Login");
  platform.loginItem.setStatus(LoginItem::Status::enabled);
  choose("Launch at Login");
  EXPECT_EQ(takeLog(), Lines(2, "Driftmark: launch-at-login change failed: Not permitted."));
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
}

// ---- the monitor's side of the restart ----

class DaemonRestartTest : public MonitorTest {
protected:
  void SetUp() override {
    platform.fileSystem.pretendEverythingExists();
    start();
  }
};

TEST_F(DaemonRestartTest, daemonIsEndedEvenWithoutTransfers) {
  monitor->restartSyncDaemon();
  EXPECT_EQ(platform.childProcesses.runs(killall).size(), 1U);
  EXPECT_EQ(changes, 1);
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: restarting iCloud sync daemon (killall bird)"));
}

TEST_F(DaemonRestartTest, restartResetsProgressOfEveryTransfer) {
  item("/old", " \u2191 10%");
  platform.clock.jump(Seconds(1000));
  item("/new", " \u2191 20%");
  platform.clock.jump(Seconds(1));
  ASSERT_TRUE(monitor->shouldOfferRestart());
  monitor->restartSyncDaemon();
  for (const char* const path : {"/old", "/new"})
    EXPECT_EQ(transfer(path).lastUpdate, now()) << path;
  EXPECT_EQ(transfer("/old").percent, 10.0);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(DaemonRestartTest, everyTransferGetsTheSameMoment) {
  for (const char* const path : {"/a", "/b", "/c"})
    item(path, " \u2191 ");
  platform.clock.tickWhenRead(std::chrono::milliseconds(1));
  monitor->restartSyncDaemon();
  EXPECT_EQ(transfer("/a").lastUpdate, transfer("/b").lastUpdate);
  EXPECT_EQ(transfer("/a").lastUpdate, transfer("/c").lastUpdate);
}

TEST_F(DaemonRestartTest, nothingElseIsForgotten) {
  item("/done", " \u2191 ");
  item("/done", " \u2601");
  item("/broken", " \u2601 Upload Error 28");
  global(fraction("0.5", "4096"));
  const auto children = platform.childProcesses.children().size();
  monitor->restartSyncDaemon();
  EXPECT_EQ(monitor->recent().size(), 1U);
  EXPECT_EQ(monitor->issues().size(), 1U);
  EXPECT_TRUE(monitor->globalActivity());
  EXPECT_EQ(platform.childProcesses.children().size(), children);
}

TEST_F(DaemonRestartTest, killallStatusIsLogged) {
  item("/a", " \u2191 ");
  takeLog();
  changes = 0;
  platform.clock.jump(Seconds(1000));
  platform.childProcesses.script(killall, ToolResult{"", 1});
  monitor->restartSyncDaemon();
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: restarting iCloud sync daemon (killall bird)",
                                     "Driftmark: killall bird exited 1"));
  EXPECT_EQ(transfer("/a").lastUpdate, now());
  EXPECT_EQ(changes, 1);
}

TEST_F(DaemonRestartTest, killallLaunchErrorIsLogged) {
  item("/a", " \u2191 ");
  takeLog();
  changes = 0;
  platform.clock.jump(Seconds(1000));
  platform.childProcesses.failLaunches(killall, {LaunchError::Stage::launch, "No such tool"});
  monitor->restartSyncDaemon();
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: restarting iCloud sync daemon (killall bird)",
                                     "Driftmark: killall bird failed: No such tool"));
  EXPECT_EQ(transfer("/a").lastUpdate, now());
  EXPECT_EQ(changes, 1);
}

} // namespace
} // namespace driftmark::test
