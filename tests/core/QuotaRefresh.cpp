#include "core/MonitorTest.h"

#include <optional>
#include <string>

namespace driftmark::test {
namespace {

class QuotaRefreshTest : public MonitorTest {
protected:
  std::size_t refreshes() const { return platform.childProcesses.runs(quotaReport).size(); }

  /// Lets one refresh read this report.
  void refresh(const std::string& text) {
    platform.childProcesses.script(quotaReport, text);
    monitor->refreshQuota();
    platform.settle();
  }
};

TEST_F(QuotaRefreshTest, refreshRunsBrctlQuotaWithItsOutputCapturedInTheBackground) {
  make();
  monitor->refreshQuota();
  const auto runs = platform.childProcesses.runs();
  ASSERT_EQ(runs.size(), 1U);
  EXPECT_EQ(runs.front()->command().executable, "/usr/bin/brctl");
  EXPECT_EQ(runs.front()->command().arguments, Arguments{"quota"});
  EXPECT_EQ(runs.front()->output(), ToolOutput::capture);
  EXPECT_FALSE(runs.front()->wasLaunched());
  EXPECT_EQ(platform.backgroundQueue.qualities(),
            std::vector<QualityOfService>{QualityOfService::utility});
}

TEST_F(QuotaRefreshTest, refreshWithoutThreadFailsLikeItsToolAndTheNextOneTriesAgain) {
  make();
  platform.backgroundQueue.refuse(PlatformError{"no thread"});
  refresh("1000 bytes\n");
  EXPECT_EQ(takeLog(), Lines{"Driftmark: brctl quota failed: no thread"});
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  EXPECT_EQ(changes, 0);
  platform.backgroundQueue.refuse(std::nullopt);
  refresh("1000 bytes\n");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, startAsksForTheQuota) {
  platform.childProcesses.script(quotaReport, "1000 bytes of quota remaining\n");
  start();
  EXPECT_EQ(refreshes(), 1U);
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, newAnswerIsStoredLoggedAndNotified) {
  make();
  refresh("1000 bytes of quota remaining in personal account\n");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(takeLog(), Lines{"Driftmark: quota remaining 1000 bytes"});
  EXPECT_EQ(changes, 1);
}

TEST_F(QuotaRefreshTest, sameAnswerIsNeitherLoggedNorNotified) {
  make();
  refresh("1000 bytes\n");
  takeLog();
  changes = 0;
  refresh("1000 other words\n");
  EXPECT_EQ(refreshes(), 2U);
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
}

TEST_F(QuotaRefreshTest, anotherAnswerReplacesTheOldOne) {
  make();
  refresh("1000 bytes\n");
  refresh("999 bytes\n");
  EXPECT_EQ(monitor->quotaRemaining(), 999);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(takeLog().back(), "Driftmark: quota remaining 999 bytes");
}

TEST_F(QuotaRefreshTest, resultArrivesThroughTheMainQueue) {
  platform.childProcesses.script(quotaReport, "1000 bytes");
  make();
  monitor->refreshQuota();
  platform.backgroundQueue.runAll();
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  platform.mainQueue.runAll();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, deliveredRefreshReleasesItsProcess) {
  make();
  refresh("1000 bytes");
  EXPECT_FALSE(platform.childProcesses.runs(quotaReport).front()->isHeld());
}

TEST_F(QuotaRefreshTest, reportWithoutANumberKeepsTheOldValue) {
  make();
  refresh("1000 bytes");
  takeLog();
  changes = 0;
  refresh("no quota");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
}

TEST_F(QuotaRefreshTest, outputThatIsNotUtf8KeepsTheOldValue) {
  make();
  refresh("1000 bytes");
  takeLog();
  changes = 0;
  refresh("42 bytes \xff");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
}

TEST_F(QuotaRefreshTest, launchFailureIsLoggedAndKeepsTheOldValue) {
  make();
  refresh("1000 bytes");
  takeLog();
  changes = 0;
  platform.childProcesses.failLaunches(
      quotaReport, {.stage = LaunchError::Stage::launch, .description = "no such file"});
  refresh("2000 bytes");
  EXPECT_EQ(takeLog(), Lines{"Driftmark: brctl quota failed: no such file"});
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(changes, 0);
}

TEST_F(QuotaRefreshTest, refreshAfterAFailedOneRunsAgain) {
  make();
  platform.childProcesses.failAllLaunches(
      {.stage = LaunchError::Stage::launch, .description = "no such file"});
  refresh("1000 bytes");
  platform.childProcesses.allowLaunches();
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, exitStatusDoesNotMatter) {
  make();
  platform.childProcesses.script(quotaReport, ToolResult{.output = "5 bytes", .exitStatus = 64});
  monitor->refreshQuota();
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 5);
}

TEST_F(QuotaRefreshTest, refreshWhileOneHangsStartsNoOther) {
  make();
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.script(quotaReport, "1000 bytes");
  platform.childProcesses.hang(quotaReport);
  monitor->refreshQuota();
  ASSERT_TRUE(platform.childProcesses.awaitHanging(quotaReport));
  monitor->refreshQuota();
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 1U);
  platform.childProcesses.release(quotaReport);
  platform.backgroundQueue.join();
  EXPECT_EQ(refreshes(), 1U);

  // The refresh lasts until its result has arrived.
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 1U);
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(refreshes(), 1U);
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 2U);
}

TEST_F(QuotaRefreshTest, hangingQuotaDoesNotDelayTheStatusPoll) {
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.hang(quotaReport);
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  make();
  monitor->start();
  ASSERT_TRUE(platform.childProcesses.awaitHanging(quotaReport));
  EXPECT_TRUE(platform.runUntil([this] { return monitor->statusActivity().has_value(); }));
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  monitor->stop();
}

TEST_F(QuotaRefreshTest, refreshEndedByTheStopKeepsTheOldValueAndTheNextOneRuns) {
  make();
  refresh("1000 bytes");
  platform.backgroundQueue.setMode(TestBackgroundQueue::Mode::thread);
  platform.childProcesses.hang(quotaReport);
  monitor->refreshQuota();
  ASSERT_TRUE(platform.childProcesses.awaitHanging(quotaReport));
  monitor->stop();
  platform.backgroundQueue.join();
  EXPECT_EQ(platform.childProcesses.runs(quotaReport).back()->terminateRequests(), 1);
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);

  platform.childProcesses.release(quotaReport);
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 3U);
}

TEST_F(QuotaRefreshTest, refreshAfterTheStopStillRuns) {
  make();
  monitor->stop();
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, answerWithoutACallbackIsStored) {
  make();
  monitor->onChange = nullptr;
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaRefreshTest, quotaIsNotRefreshedByItself) {
  start();
  advance(86400);
  platform.settle();
  EXPECT_EQ(refreshes(), 1U);
}

TEST_F(QuotaRefreshTest, refreshFromTheNotificationOfTheLastOneRuns) {
  make();
  int asked = 0;
  monitor->onChange = [&] {
    if (asked++ == 0)
      monitor->refreshQuota();
  };
  refresh("1000 bytes");
  EXPECT_EQ(refreshes(), 2U);
}

} // namespace
} // namespace driftmark::test
