#include "core/MonitorTest.h"

namespace driftmark::test {
namespace {

class SyncMonitorTest : public MonitorTest {};

TEST_F(SyncMonitorTest, freshMonitorKnowsNothing) {
  make();
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(SyncMonitorTest, freshMonitorIsIdleSoNoHoldIsInForce) {
  make();
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_EQ(monitor->progress(), std::nullopt);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(SyncMonitorTest, makingAMonitorStartsNothing) {
  make();
  platform.settle();
  EXPECT_TRUE(platform.childProcesses.spawnAttempts().empty());
  EXPECT_TRUE(platform.childProcesses.runs().empty());
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
  EXPECT_TRUE(platform.mainQueue.timers().empty());
  EXPECT_TRUE(takeLog().empty());
  EXPECT_EQ(changes, 0);
}

TEST_F(SyncMonitorTest, freshMonitorHasNoChangeCallback) {
  const auto fresh = SyncMonitor::make(ports());
  EXPECT_FALSE(fresh->onChange);
}

TEST_F(SyncMonitorTest, constantsAreThoseOfTheProduct) {
  EXPECT_EQ(SyncMonitor::holdDuration, Seconds(3.0));
  EXPECT_EQ(SyncMonitor::holdRedrawDelay, Seconds(3.1));
  EXPECT_EQ(SyncMonitor::globalWindow, Seconds(60.0));
  EXPECT_EQ(SyncMonitor::globalExpiryDelay, Seconds(60.5));
  EXPECT_EQ(SyncMonitor::statusPollInterval, Seconds(20.0));
  EXPECT_EQ(SyncMonitor::restartDelay, Seconds(10.0));
  EXPECT_EQ(SyncMonitor::defaultStalledAfter, Seconds(300.0));
  EXPECT_EQ(SyncMonitor::minSweepInterval, Seconds(5.0));
  EXPECT_EQ(SyncMonitor::maxSweepInterval, Seconds(30.0));
  EXPECT_EQ(SyncMonitor::maxRecent, 10U);
}

TEST_F(SyncMonitorTest, cloudDocsPathLiesInTheHomeFolder) {
  EXPECT_EQ(SyncMonitor::cloudDocsPath(platform.fileSystem),
            "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs");
  platform.fileSystem.setHome("/home/lin");
  EXPECT_EQ(SyncMonitor::cloudDocsPath(platform.fileSystem),
            "/home/lin/Library/Mobile Documents/com~apple~CloudDocs");
}

TEST_F(SyncMonitorTest, containerPathAppendsItsArgumentAsItIs) {
  const std::string folder = "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs";
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, "/Documents/a.txt"),
            folder + "/Documents/a.txt");
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, "x"), folder + "x");
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, ""), folder);
}

TEST_F(SyncMonitorTest, itemsLieInTheHomeFolderAtTheTimeOfMaking) {
  platform.fileSystem.setHome("/home/lin");
  start();
  platform.fileSystem.setHome("/elsewhere");
  ASSERT_TRUE(item("/com~apple~CloudDocs/a.txt", " \u2191 1%"));
  ASSERT_EQ(monitor->active().size(), 1U);
  EXPECT_EQ(monitor->active().begin()->path,
            "/home/lin/Library/Mobile Documents/com~apple~CloudDocs/a.txt");
}

TEST_F(SyncMonitorTest, activeItemCarriesItsOwnKey) {
  start();
  item("/com~apple~CloudDocs/a.txt", " \u2191 1%");
  item("/com~apple~CloudDocs/b.txt", " \u2601 \u2193 2%");
  ASSERT_EQ(monitor->active().size(), 2U);
  for (const ActiveItem& item : monitor->active())
    EXPECT_EQ(monitor->active().find(item.path), &item);
}

TEST(OverallStateTest, statesHaveTheirNames) {
  EXPECT_EQ(name(OverallState::idle), "idle");
  EXPECT_EQ(name(OverallState::uploading), "uploading");
  EXPECT_EQ(name(OverallState::downloading), "downloading");
  EXPECT_EQ(name(OverallState::both), "both");
  EXPECT_EQ(name(OverallState::syncing), "syncing");
  EXPECT_EQ(name(OverallState::attention), "attention");
}

} // namespace
} // namespace driftmark::test
