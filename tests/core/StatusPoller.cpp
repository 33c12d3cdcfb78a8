#include "core/MonitorTest.h"

#include <optional>
#include <string>

namespace driftmark::test {
namespace {

// The jobs of a report.
const std::string downloadJob = "> downloader{7 b.mov} downloading: 40%\n";
const std::string uploadJob = "> upload{9 c.txt} active\n";

std::optional<StatusActivity> activity(int downloads, int uploads,
                                       std::vector<std::string> directories) {
  return StatusActivity{
      .downloads = downloads, .uploads = uploads, .directories = std::move(directories)};
}

class StatusPollerTest : public MonitorTest {
protected:
  std::size_t polls() const { return platform.childProcesses.runs(statusReport).size(); }

  void report(const std::string& text) { platform.childProcesses.script(statusReport, text); }

  /// Moves time and lets the polls that become due run.
  void pass(double seconds) {
    advance(seconds);
    platform.settle();
  }

  /// Starts with a first poll that finds one downloadJob under "/A".
  void startBusy() {
    report("Under /A\n" + downloadJob);
    start();
    ASSERT_EQ(polls(), 1U);
    ASSERT_TRUE(monitor->statusActivity());
  }
};

TEST_F(StatusPollerTest, pollRunsBrctlStatusWithItsOutputCapturedInTheBackground) {
  make();
  monitor->start();
  const auto runs = platform.childProcesses.runs(statusReport);
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs.front()->command().executable, "/usr/bin/brctl");
  EXPECT_EQ(runs.front()->output(), ToolOutput::capture);
  EXPECT_FALSE(runs.front()->wasLaunched());
  for (const QualityOfService quality : platform.backgroundQueue.qualities())
    EXPECT_EQ(quality, QualityOfService::utility);
  platform.backgroundQueue.runAll();
  EXPECT_TRUE(runs.front()->wasLaunched());
}

TEST_F(StatusPollerTest, resultArrivesThroughTheMainQueue) {
  report("Under /A\n" + downloadJob);
  make();
  monitor->start();
  platform.backgroundQueue.runAll();
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  platform.mainQueue.runAll();
  EXPECT_EQ(monitor->statusActivity(), activity(1, 0, {"/A"}));
}

TEST_F(StatusPollerTest, resultIsLoggedWithItsDirectoriesAndNotified) {
  report("Under /A\n" + downloadJob + downloadJob + "Under /B c\n" + uploadJob);
  make();
  monitor->start();
  takeLog();
  platform.settle();
  EXPECT_EQ(takeLog(), Lines{"Driftmark: status confirms 2 download(s), 1 upload(s) in /A, /B c"});
  EXPECT_EQ(changes, 1);
}

TEST_F(StatusPollerTest, resultWithoutDirectoriesIsLoggedWithNone) {
  report(uploadJob);
  make();
  monitor->start();
  takeLog();
  platform.settle();
  EXPECT_EQ(takeLog(), Lines{"Driftmark: status confirms 0 download(s), 1 upload(s) in "});
}

TEST_F(StatusPollerTest, deliveredPollReleasesItsProcess) {
  startBusy();
  EXPECT_FALSE(platform.childProcesses.runs(statusReport).front()->isHeld());
}

TEST_F(StatusPollerTest, nextPollStartsTwentySecondsAfterTheResult) {
  report("Under /A\n" + downloadJob);
  make();
  monitor->start();
  advance(7);
  platform.settle();
  pass(19.999);
  EXPECT_EQ(polls(), 1U);
  pass(0.001);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, pollsNeverOverlap) {
  report("Under /A\n" + downloadJob);
  make();
  monitor->start();
  advance(600);
  EXPECT_EQ(polls(), 1U);
  platform.settle();
  advance(600);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, sameResultIsNeitherLoggedNorNotifiedButPollingContinues) {
  startBusy();
  pass(20);
  EXPECT_EQ(polls(), 2U);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
  pass(20);
  EXPECT_EQ(polls(), 3U);
}

TEST_F(StatusPollerTest, everyDifferenceIsLoggedAndNotified) {
  startBusy();
  report("Under /A\n" + downloadJob + downloadJob);
  pass(20);
  report("Under /A\n" + downloadJob + uploadJob);
  pass(20);
  report("Under /B\n" + downloadJob + uploadJob);
  pass(20);
  EXPECT_EQ(takeLog(), (Lines{"Driftmark: status confirms 2 download(s), 0 upload(s) in /A",
                              "Driftmark: status confirms 1 download(s), 1 upload(s) in /A",
                              "Driftmark: status confirms 1 download(s), 1 upload(s) in /B"}));
  EXPECT_EQ(changes, 3);
}

TEST_F(StatusPollerTest, pollThatFindsNothingClearsTheCountsAndEndsTheChain) {
  startBusy();
  report("");
  pass(20);
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
  pass(3600);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, quietStartPollsOnce) {
  start();
  EXPECT_EQ(polls(), 1U);
  EXPECT_EQ(changes, 0);
  pass(3600);
  EXPECT_EQ(polls(), 1U);
}

TEST_F(StatusPollerTest, pollingContinuesWhileTheGlobalFeedIsBusy) {
  start();
  global(fraction("0.5", "4096"));
  platform.settle();
  EXPECT_EQ(polls(), 2U);
  for (std::size_t poll = 3; poll <= 4; ++poll) {
    pass(20);
    EXPECT_EQ(polls(), poll);
  }
  pass(20);
  EXPECT_EQ(polls(), 5U);
  pass(3600);
  EXPECT_EQ(polls(), 5U);
}

TEST_F(StatusPollerTest, clearedCountsAreNotifiedOnceWhilePollingContinues) {
  startBusy();
  global(fraction("0.5", "4096"));
  changes = 0;
  report("");
  pass(20);
  EXPECT_EQ(changes, 1);
  pass(20);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(polls(), 3U);
}

TEST_F(StatusPollerTest, globalTransferStartsAChainThatHadEnded) {
  start();
  pass(100);
  EXPECT_EQ(polls(), 1U);
  global(fraction("0.5", "4096"));
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, refreshedGlobalTransferRestartsAnEndedChainToo) {
  start();
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(61));
  platform.settle();
  EXPECT_EQ(polls(), 2U);
  platform.clock.jump(Seconds(-31));
  ASSERT_TRUE(monitor->globalActivity());
  EXPECT_FALSE(global(fraction("0.6", "4096")));
  EXPECT_EQ(polls(), 3U);
}

TEST_F(StatusPollerTest, globalLinesDuringAChainStartNoSecondOne) {
  startBusy();
  global(fraction("0.5", "1"));
  global(fraction("0.5", "2"));
  platform.settle();
  EXPECT_EQ(polls(), 1U);
  pass(20);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, globalLinesDuringAPollStartNoSecondOne) {
  make();
  monitor->start();
  EXPECT_EQ(polls(), 1U);
  global(fraction("0.5", "1"));
  EXPECT_EQ(polls(), 1U);
  platform.settle();
  pass(20);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, secondStartStartsNoSecondChain) {
  startBusy();
  monitor->start();
  platform.settle();
  EXPECT_EQ(polls(), 1U);
  pass(20);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, chainThatEndedIsStartedByTheNextStart) {
  start();
  monitor->start();
  EXPECT_EQ(polls(), 2U);
}

// ---- failures ----

TEST_F(StatusPollerTest, launchFailureIsLoggedAndFindsNothing) {
  startBusy();
  platform.childProcesses.failLaunches(
      statusReport, {.stage = LaunchError::Stage::launch, .description = "permission denied"});
  pass(20);
  EXPECT_EQ(takeLog(), Lines{"Driftmark: brctl status failed: permission denied"});
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(changes, 1);
  pass(3600);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, pollWithoutThreadFailsLikeItsToolAndTheNextOneTriesAgain) {
  startBusy();
  platform.backgroundQueue.refuse(PlatformError{"no thread"});
  pass(20);
  EXPECT_EQ(takeLog(), Lines{"Driftmark: brctl status failed: no thread"});
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(changes, 1);
  platform.backgroundQueue.refuse(std::nullopt);
  global(fraction("0.5", "4096"));
  platform.settle();
  EXPECT_TRUE(monitor->statusActivity());
}

TEST_F(StatusPollerTest, everyFailingPollIsLogged) {
  start();
  platform.childProcesses.failLaunches(
      statusReport, {.stage = LaunchError::Stage::launch, .description = "permission denied"});
  global(fraction("0.5", "4096"));
  takeLog();
  platform.settle();
  pass(20);
  pass(20);
  EXPECT_EQ(takeLog(), Lines(3, "Driftmark: brctl status failed: permission denied"));
}

TEST_F(StatusPollerTest, outputThatIsNotUtf8FindsNothing) {
  startBusy();
  report("Under /A\n" + downloadJob + "\xff");
  pass(20);
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(StatusPollerTest, exitStatusDoesNotMatter) {
  platform.childProcesses.script(
      statusReport, ToolResult{.output = "Under /A\n" + downloadJob, .exitStatus = 70});
  start();
  EXPECT_EQ(monitor->statusActivity(), activity(1, 0, {"/A"}));
}

// ---- stopping ----

TEST_F(StatusPollerTest, scheduledPollAfterTheStopRunsNothingAndKeepsTheCounts) {
  startBusy();
  monitor->stop();
  changes = 0;
  pass(3600);
  EXPECT_EQ(polls(), 1U);
  EXPECT_EQ(monitor->statusActivity(), activity(1, 0, {"/A"}));
  EXPECT_EQ(changes, 0);
}

TEST_F(StatusPollerTest, resultThatArrivesAfterTheStopIsStoredAndEndsTheChain) {
  report("Under /A\n" + downloadJob);
  make();
  monitor->start();
  platform.backgroundQueue.runAll();
  monitor->stop();
  platform.settle();
  EXPECT_EQ(monitor->statusActivity(), activity(1, 0, {"/A"}));
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
  pass(3600);
  EXPECT_EQ(polls(), 1U);
}

TEST_F(StatusPollerTest, pollEndedByTheStopDeliversWhatItPrinted) {
  startBusy();
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.hang(statusReport, "Under /B\n" + uploadJob);
  advance(20);
  ASSERT_TRUE(platform.childProcesses.awaitHanging(statusReport));
  monitor->stop();
  platform.backgroundQueue.join();
  platform.settle();
  EXPECT_EQ(monitor->statusActivity(), activity(0, 1, {"/B"}));
  pass(3600);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(StatusPollerTest, stopCancelsTheReadingOfALongReport) {
  std::string text;
  for (int job = 0; job < 20'000; ++job)
    text += uploadJob;
  platform.childProcesses.hang(statusReport, text);
  make();
  platform.childProcesses.onRun([this](const ToolCommand& command) {
    if (command.arguments == statusReport)
      monitor->stop();
  });
  monitor->start();
  platform.settle();
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
}

TEST_F(StatusPollerTest, pollEndedByTheStopWithoutOutputClearsTheCounts) {
  startBusy();
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.hang(statusReport);
  advance(20);
  ASSERT_TRUE(platform.childProcesses.awaitHanging(statusReport));
  monitor->stop();
  platform.backgroundQueue.join();
  platform.settle();
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
}

TEST_F(StatusPollerTest, nothingIsPolledAfterTheStop) {
  start();
  items().ignoreTerminate();
  globals().ignoreTerminate();
  monitor->stop();
  global(fraction("0.5", "4096"));
  EXPECT_TRUE(monitor->globalActivity());
  platform.settle();
  EXPECT_EQ(polls(), 1U);
  pass(3600);
  EXPECT_EQ(polls(), 1U);
}

TEST_F(StatusPollerTest, startAfterTheStopPollsNothing) {
  make();
  monitor->stop();
  monitor->start();
  platform.settle();
  EXPECT_EQ(polls(), 0U);
}

TEST_F(StatusPollerTest, stopFromTheNotificationOfAResultEndsTheChain) {
  startBusy();
  report("Under /B\n" + uploadJob);
  monitor->onChange = [this] { monitor->stop(); };
  pass(20);
  EXPECT_EQ(polls(), 2U);
  pass(3600);
  EXPECT_EQ(polls(), 2U);
}

} // namespace
} // namespace driftmark::test
