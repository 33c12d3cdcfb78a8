#include "core/MonitorTest.h"

#include <memory>
#include <string>

namespace driftmark::test {
namespace {

/// What happens to waiting callbacks when the monitor is released.
class OwnershipTest : public MonitorTest {
protected:
  std::weak_ptr<SyncMonitor> release() {
    std::weak_ptr<SyncMonitor> weak = monitor;
    monitor.reset();
    return weak;
  }
};

TEST_F(OwnershipTest, idleMonitorIsDestroyedAtOnce) {
  start();
  EXPECT_TRUE(release().expired());
}

TEST_F(OwnershipTest, releasedMonitorReleasesItsChildrenAndDoesNotTerminateThem) {
  start();
  const auto child = platform.childProcesses.children(itemMonitor).front();
  release();
  EXPECT_FALSE(child->isHeld());
  EXPECT_FALSE(child->isRead());
  EXPECT_EQ(child->terminateRequests(), 0);
  EXPECT_TRUE(child->isRunning());
}

TEST_F(OwnershipTest, pendingOutputForAReleasedMonitorIsDropped) {
  start();
  items().print(" o /a.txt \u2191 1%\r\n");
  globals().print(fraction("0.5", "4096") + "\r\n");
  release();
  platform.settle();
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(OwnershipTest, pendingExitForAReleasedMonitorIsDropped) {
  start();
  items().exit();
  release();
  advance(60);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 2U);
}

TEST_F(OwnershipTest, scheduledRelaunchOfAReleasedMonitorDoesNothing) {
  start();
  items().exit();
  platform.mainQueue.runAll();
  takeLog();
  EXPECT_TRUE(release().expired());
  advance(60);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(platform.childProcesses.spawnAttempts().size(), 2U);
}

TEST_F(OwnershipTest, redrawAfterTheHoldOfAReleasedMonitorDoesNothing) {
  start();
  item("/a.txt", " \u2191 1%");
  item("/a.txt", " \u2601");
  changes = 0;
  EXPECT_TRUE(release().expired());
  advance(60);
  EXPECT_EQ(changes, 0);
}

TEST_F(OwnershipTest, sweepTimerEndsWithTheMonitor) {
  start();
  item("/a.txt", " \u2191 1%");
  ASSERT_EQ(platform.mainQueue.timers().size(), 1U);
  changes = 0;
  EXPECT_TRUE(release().expired());
  EXPECT_TRUE(platform.mainQueue.timers().empty());
  advance(60);
  EXPECT_EQ(changes, 0);
}

TEST_F(OwnershipTest, expiryCheckOfAReleasedMonitorDoesNothing) {
  start();
  global(fraction("0.5", "4096"));
  platform.backgroundQueue.clear();
  changes = 0;
  EXPECT_TRUE(release().expired());
  advance(120);
  EXPECT_EQ(changes, 0);
}

TEST_F(OwnershipTest, runningReportsDoNotKeepTheMonitorAlive) {
  platform.childProcesses.script(quotaReport, "1000 bytes");
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  make();
  monitor->start();
  takeLog();
  EXPECT_TRUE(release().expired());
  platform.settle();
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
  advance(600);
  EXPECT_EQ(platform.childProcesses.runs().size(), 2U);
}

TEST_F(OwnershipTest, pendingResultsForAReleasedMonitorAreDropped) {
  platform.childProcesses.script(quotaReport, "1000 bytes");
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  make();
  monitor->start();
  platform.backgroundQueue.runAll();
  takeLog();
  EXPECT_TRUE(release().expired());
  platform.mainQueue.runAll();
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(changes, 0);
}

TEST_F(OwnershipTest, launchFailureOfAReportIsLoggedAfterTheMonitorIsReleased) {
  make();
  monitor->refreshQuota();
  platform.childProcesses.failAllLaunches(
      {.stage = LaunchError::Stage::launch, .description = "no such file"});
  release();
  platform.settle();
  EXPECT_EQ(takeLog(), Lines{"Driftmark: brctl quota failed: no such file"});
}

TEST_F(OwnershipTest, delayedPollKeepsTheMonitorAliveUntilItRuns) {
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  start();
  const auto weak = release();
  EXPECT_FALSE(weak.expired());
  advance(19.999);
  EXPECT_FALSE(weak.expired());
  EXPECT_EQ(platform.childProcesses.runs(statusReport).size(), 1U);
  advance(0.001);
  EXPECT_EQ(platform.childProcesses.runs(statusReport).size(), 2U);
  EXPECT_TRUE(weak.expired());
  platform.settle();
  advance(600);
  EXPECT_EQ(platform.childProcesses.runs(statusReport).size(), 2U);
}

TEST_F(OwnershipTest, delayedPollOfAStoppedMonitorReleasesItWithoutPolling) {
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  start();
  monitor->stop();
  platform.settle();
  const auto weak = release();
  EXPECT_FALSE(weak.expired());
  advance(20);
  EXPECT_TRUE(weak.expired());
  EXPECT_EQ(platform.childProcesses.runs(statusReport).size(), 1U);
}

TEST_F(OwnershipTest, callbackIsReleasedWithTheMonitor) {
  start();
  const auto token = std::make_shared<int>(0);
  monitor->onChange = [token] { ++*token; };
  EXPECT_EQ(token.use_count(), 2);
  release();
  EXPECT_EQ(token.use_count(), 1);
}

TEST_F(OwnershipTest, monitorMayBeReleasedFromItsOwnNotification) {
  start();
  const std::weak_ptr<SyncMonitor> weak = monitor;
  monitor->onChange = [this] {
    ++changes;
    monitor.reset();
  };
  items().print(" o /a.txt \u2191 1%\r\n");
  platform.settle();
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(weak.expired());
}

TEST_F(OwnershipTest, monitorMayBeReleasedFromTheNotificationOfASweep) {
  start();
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  const std::weak_ptr<SyncMonitor> weak = monitor;
  monitor->onChange = [this] { monitor.reset(); };
  advance(30);
  EXPECT_TRUE(weak.expired());
  EXPECT_TRUE(platform.mainQueue.timers().empty());
}

TEST_F(OwnershipTest, monitorMayBeReleasedFromTheNotificationOfAResult) {
  platform.childProcesses.script(quotaReport, "1000 bytes");
  make();
  const std::weak_ptr<SyncMonitor> weak = monitor;
  monitor->onChange = [this] { monitor.reset(); };
  monitor->refreshQuota();
  platform.settle();
  EXPECT_TRUE(weak.expired());
}

TEST_F(OwnershipTest, twoMonitorsKeepTheirModelsApart) {
  start();
  const auto first = monitor;
  item("/a.txt", " \u2191 1%");
  make();
  monitor->start();
  platform.settle();
  item("/b.txt", " \u2191 1%");
  EXPECT_EQ(first->active().size(), 1U);
  EXPECT_EQ(monitor->active().size(), 1U);
  EXPECT_TRUE(active("/b.txt"));
}

TEST_F(OwnershipTest, droppedPollReleasesTheMonitor) {
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  platform.fileSystem.pretendEverythingExists();
  start();
  item("/a.txt", " \u2191 1%");
  const auto weak = release();
  EXPECT_FALSE(weak.expired());
  platform.mainQueue.clear();
  EXPECT_TRUE(weak.expired());
}

} // namespace
} // namespace driftmark::test
