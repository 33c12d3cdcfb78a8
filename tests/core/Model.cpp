#include "core/MonitorTest.h"

#include <unordered_set>

namespace driftmark::test {
namespace {

class ModelTest : public MonitorTest {};

TEST_F(ModelTest, freshMonitorKnowsNothing) {
  make();
  EXPECT_TRUE(monitor->active().empty());
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_TRUE(monitor->issues().empty());
  EXPECT_EQ(monitor->statusActivity(), std::nullopt);
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(ModelTest, freshMonitorIsIdleSoNoHoldIsInForce) {
  make();
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_EQ(monitor->progress(), std::nullopt);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(ModelTest, makingAMonitorStartsNothing) {
  make();
  platform.settle();
  EXPECT_TRUE(platform.childProcesses.spawnAttempts().empty());
  EXPECT_TRUE(platform.childProcesses.runs().empty());
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
  EXPECT_TRUE(platform.mainQueue.timers().empty());
  EXPECT_TRUE(takeLog().empty());
  EXPECT_EQ(changes, 0);
}

TEST_F(ModelTest, freshMonitorHasNoChangeCallback) {
  const auto fresh = SyncMonitor::make(ports());
  EXPECT_FALSE(fresh->onChange);
}

TEST_F(ModelTest, constantsAreThoseOfTheProduct) {
  EXPECT_EQ(SyncMonitor::holdDuration, Seconds(3.0));
  EXPECT_EQ(SyncMonitor::globalWindow, Seconds(60.0));
  EXPECT_EQ(SyncMonitor::statusPollInterval, Seconds(20.0));
  EXPECT_EQ(SyncMonitor::restartDelay, Seconds(10.0));
  EXPECT_EQ(SyncMonitor::maxRecent, 10U);
}

TEST_F(ModelTest, cloudDocsPathLiesInTheHomeFolder) {
  EXPECT_EQ(SyncMonitor::cloudDocsPath(platform.fileSystem),
            "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs");
  platform.fileSystem.setHome("/home/grace");
  EXPECT_EQ(SyncMonitor::cloudDocsPath(platform.fileSystem),
            "/home/grace/Library/Mobile Documents/com~apple~CloudDocs");
}

TEST_F(ModelTest, containerPathAppendsItsArgumentAsItIs) {
  const std::string folder = "/Users/ada/Library/Mobile Documents/com~apple~CloudDocs";
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, "/Documents/a.txt"),
            folder + "/Documents/a.txt");
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, "x"), folder + "x");
  EXPECT_EQ(SyncMonitor::containerPath(platform.fileSystem, ""), folder);
}

TEST_F(ModelTest, itemsLieInTheHomeFolderOfTheMomentOfMaking) {
  platform.fileSystem.setHome("/home/grace");
  start();
  platform.fileSystem.setHome("/elsewhere");
  ASSERT_TRUE(item("/com~apple~CloudDocs/a.txt", " \u2191 1%"));
  ASSERT_EQ(monitor->active().size(), 1U);
  EXPECT_EQ(monitor->active().begin()->first,
            "/home/grace/Library/Mobile Documents/com~apple~CloudDocs/a.txt");
}

TEST_F(ModelTest, activeItemCarriesItsOwnKey) {
  start();
  item("/com~apple~CloudDocs/a.txt", " \u2191 1%");
  item("/com~apple~CloudDocs/b.txt", " \u2601 \u2193 2%");
  ASSERT_EQ(monitor->active().size(), 2U);
  for (const auto& [path, item] : monitor->active())
    EXPECT_EQ(item.path, path);
}

TEST_F(ModelTest, valuesHandedOutAreCopies) {
  start();
  item("/a.txt", " \u2191 1%");
  ActiveItem copy = transfer("/a.txt");
  copy.percent = 99;
  copy.direction = Direction::download;
  EXPECT_EQ(transfer("/a.txt").percent, 1.0);
  EXPECT_EQ(transfer("/a.txt").direction, Direction::upload);
}

TEST(StatusActivityTest, equalWhenAllFieldsAreEqualInOrder) {
  const StatusActivity activity{.downloads = 1, .uploads = 2, .directories = {"/a", "/b"}};
  StatusActivity other = activity;
  EXPECT_EQ(activity, other);
  other.downloads = 2;
  EXPECT_NE(activity, other);
  other = activity;
  other.uploads = 0;
  EXPECT_NE(activity, other);
  other = activity;
  other.directories = {"/b", "/a"};
  EXPECT_NE(activity, other);
}

TEST(EnumerationTest, casesStandInTheirOrder) {
  EXPECT_LT(Direction::upload, Direction::download);
  EXPECT_LT(RecentKind::upload, RecentKind::download);
  EXPECT_LT(RecentKind::download, RecentKind::evicted);
  EXPECT_LT(OverallState::idle, OverallState::uploading);
  EXPECT_LT(OverallState::uploading, OverallState::downloading);
  EXPECT_LT(OverallState::downloading, OverallState::both);
  EXPECT_LT(OverallState::both, OverallState::syncing);
  EXPECT_LT(OverallState::syncing, OverallState::attention);
}

TEST(EnumerationTest, valuesCanKeyASet) {
  const std::unordered_set<OverallState> states{OverallState::idle, OverallState::both,
                                                OverallState::idle};
  EXPECT_EQ(states.size(), 2U);
  const std::unordered_set<Direction> directions{Direction::upload, Direction::download};
  EXPECT_EQ(directions.size(), 2U);
  const std::unordered_set<RecentKind> kinds{RecentKind::evicted, RecentKind::evicted};
  EXPECT_EQ(kinds.size(), 1U);
}

TEST(EnumerationTest, statesHaveTheirNames) {
  EXPECT_EQ(name(OverallState::idle), "idle");
  EXPECT_EQ(name(OverallState::uploading), "uploading");
  EXPECT_EQ(name(OverallState::downloading), "downloading");
  EXPECT_EQ(name(OverallState::both), "both");
  EXPECT_EQ(name(OverallState::syncing), "syncing");
  EXPECT_EQ(name(OverallState::attention), "attention");
}

} // namespace
} // namespace driftmark::test
