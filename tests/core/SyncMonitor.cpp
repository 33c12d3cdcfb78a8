#include "core/MonitorTest.h"
#include "support/HeapInUse.h"

#include <string>
#include <string_view>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

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

// ---- memory ----

/// Feeds lines and reports of sixteen million bytes.
class ExceptionalLineTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  void feed(TestChild& child, std::string_view text) {
    while (!text.empty()) {
      const std::string_view chunk = text.substr(0, ChildProcesses::maxChunkSize);
      child.print(chunk);
      platform.mainQueue.runAll();
      text.remove_prefix(chunk.size());
    }
  }

  void feedItems(const std::string& before, const std::string& after) {
    feed(items(), std::string(before).append(long_).append(after).append("\r\n"));
  }

  void feedGlobal(const std::string& before, const std::string& after) {
    feed(globals(), std::string(before).append(long_).append(after).append("\r\n"));
  }

  /// Lets the monitor read this report, and then an empty one.
  void report(const Arguments& arguments, const std::string& before, const std::string& after) {
    platform.childProcesses.script(arguments, std::string(before).append(long_).append(after));
    monitor->refreshQuota();
    global(fraction("0.5", "1"));
    platform.settle();
    platform.childProcesses.script(arguments, "");
    monitor->refreshQuota();
    advance(20);
    platform.settle();
  }

  /// Expects that `work` keeps no memory for its long text.
  template <class Work> void expectGivenBack(Work work) {
    const std::size_t before = heapInUse();
    work();
    takeLog();
    EXPECT_LT(heapInUse(), before + long_.size() / 16);
  }

  const std::string long_ = std::string(std::size_t{16} << 20, 'x');
};

TEST_F(ExceptionalLineTest, noiseLeavesNoMemoryInUse) {
  expectGivenBack([this] { feedItems("", ""); });
}

TEST_F(ExceptionalLineTest, lineThatIsNotUtf8LeavesNoMemoryInUse) {
  expectGivenBack([this] { feedItems(" o /a", "\xff" + cloud); });
}

TEST_F(ExceptionalLineTest, knownItemLeavesNoMemoryInUse) {
  expectGivenBack([this] { feedItems(" o /a", cloud); });
}

TEST_F(ExceptionalLineTest, colouredItemLeavesNoMemoryInUse) {
  expectGivenBack([this] { feedItems("\x1b[1m o /a", "\x1b[0m" + cloud); });
}

TEST_F(ExceptionalLineTest, droppedTransferLeavesNoMemoryInUse) {
  expectGivenBack([this] {
    feedItems(" o /a", " \u2191 1%");
    ASSERT_EQ(monitor->active().size(), 1U);
    advance(30);
    ASSERT_TRUE(monitor->active().empty());
  });
}

TEST_F(ExceptionalLineTest, clearedIssueLeavesNoMemoryInUse) {
  expectGivenBack([this] {
    feedItems(" o /a" + cloud + " conflict ", "");
    ASSERT_EQ(monitor->issues().size(), 1U);
    item("/a", cloud);
    ASSERT_TRUE(monitor->issues().empty());
  });
}

TEST_F(ExceptionalLineTest, replacedIssueLeavesNoMemoryInUse) {
  expectGivenBack([this] {
    feedItems(" o /a" + cloud + " conflict ", "");
    item("/a", cloud + " conflict");
    ASSERT_EQ(issue("/a"), "conflict");
  });
}

TEST_F(ExceptionalLineTest, unrecognizedStateLeavesNoMemoryInUse) {
  expectGivenBack([this] { feedItems(" o /a" + cloud + " state ", ""); });
}

TEST_F(ExceptionalLineTest, lineOfTheGlobalMonitorLeavesNoMemoryInUse) {
  expectGivenBack([this] { feedGlobal("", ""); });
  expectGivenBack([this] { feedGlobal("\x1b[1m", fraction("0.5", "1")); });
}

TEST_F(ExceptionalLineTest, statusReportLeavesNoMemoryInUse) {
  expectGivenBack([this] { report(statusReport, "Under /", "\n> upload{1} active\n"); });
}

TEST_F(ExceptionalLineTest, quotaReportLeavesNoMemoryInUse) {
  expectGivenBack([this] { report(quotaReport, "1000 ", ""); });
}

} // namespace
} // namespace driftmark::test
