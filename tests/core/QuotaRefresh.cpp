#include "core/MonitorTest.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace driftmark::test {
namespace {

class QuotaTest : public MonitorTest {
protected:
  std::size_t refreshes() const { return platform.childProcesses.runs(quotaReport).size(); }

  /// Lets one refresh read this report.
  void refresh(const std::string& text) {
    platform.childProcesses.script(quotaReport, text);
    monitor->refreshQuota();
    platform.settle();
  }
};

TEST_F(QuotaTest, refreshRunsBrctlQuotaWithItsOutputCapturedInTheBackground) {
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

TEST_F(QuotaTest, startAsksForTheQuota) {
  platform.childProcesses.script(quotaReport, "1000 bytes of quota remaining\n");
  start();
  EXPECT_EQ(refreshes(), 1U);
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaTest, newAnswerIsStoredLoggedAndNotified) {
  make();
  refresh("1000 bytes of quota remaining in personal account\n");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(takeLog(), Lines{"Driftmark: quota remaining 1000 bytes"});
  EXPECT_EQ(changes, 1);
}

TEST_F(QuotaTest, sameAnswerIsNeitherLoggedNorNotified) {
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

TEST_F(QuotaTest, anotherAnswerReplacesTheOldOne) {
  make();
  refresh("1000 bytes\n");
  refresh("999 bytes\n");
  EXPECT_EQ(monitor->quotaRemaining(), 999);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(takeLog().back(), "Driftmark: quota remaining 999 bytes");
}

TEST_F(QuotaTest, resultArrivesThroughTheMainQueue) {
  platform.childProcesses.script(quotaReport, "1000 bytes");
  make();
  monitor->refreshQuota();
  platform.backgroundQueue.runAll();
  EXPECT_EQ(monitor->quotaRemaining(), std::nullopt);
  platform.mainQueue.runAll();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaTest, deliveredRefreshReleasesItsProcess) {
  make();
  refresh("1000 bytes");
  EXPECT_FALSE(platform.childProcesses.runs(quotaReport).front()->isHeld());
}

struct ReportCase {
  std::string name;
  std::string report;
  std::optional<std::int64_t> bytes;

  friend std::ostream& operator<<(std::ostream& out, const ReportCase& each) {
    return out << each.name;
  }
};

class QuotaReportTest : public QuotaTest, public testing::WithParamInterface<ReportCase> {};

TEST_P(QuotaReportTest, firstWordIsReadAsANumberOfBytes) {
  make();
  refresh(GetParam().report);
  EXPECT_EQ(monitor->quotaRemaining(), GetParam().bytes);
  EXPECT_EQ(changes, GetParam().bytes ? 1 : 0);
  EXPECT_EQ(takeLog().size(), GetParam().bytes ? 1U : 0U);
}

TEST_P(QuotaReportTest, withoutANumberTheOldValueStays) {
  make();
  refresh("77 bytes");
  refresh(GetParam().report);
  EXPECT_EQ(monitor->quotaRemaining(), GetParam().bytes.value_or(77));
}

INSTANTIATE_TEST_SUITE_P(
    Reports, QuotaReportTest,
    testing::Values(
        ReportCase{"plain", "42 bytes of quota remaining\n", 42},
        ReportCase{"leadingSpaces", "   42 word", 42}, ReportCase{"bareNumber", "42", 42},
        ReportCase{"zero", "0 bytes", 0}, ReportCase{"leadingZeros", "0042 bytes", 42},
        ReportCase{"plusSign", "+42 bytes", 42}, ReportCase{"minusSign", "-42 bytes", -42},
        ReportCase{"largest", "9223372036854775807 bytes",
                   std::numeric_limits<std::int64_t>::max()},
        ReportCase{"smallest", "-9223372036854775808 bytes",
                   std::numeric_limits<std::int64_t>::min()},
        ReportCase{"tooLarge", "9223372036854775808 bytes", std::nullopt},
        ReportCase{"farTooLarge", "99999999999999999999999 bytes", std::nullopt},
        ReportCase{"numberAndLineEnd", "42\n", std::nullopt},
        ReportCase{"numberAndCarriageReturn", "42\r\n", std::nullopt},
        ReportCase{"lineEndInFront", "\n42 bytes", std::nullopt},
        ReportCase{"tabInFront", "\t42 bytes", std::nullopt},
        ReportCase{"tabBehind", "42\tbytes", std::nullopt},
        ReportCase{"thousandsSeparator", "42,000 bytes", std::nullopt},
        ReportCase{"point", "42.0 bytes", std::nullopt},
        ReportCase{"letters", "42GB left", std::nullopt},
        ReportCase{"words", "no quota", std::nullopt}, ReportCase{"empty", "", std::nullopt},
        ReportCase{"spacesOnly", "   ", std::nullopt}, ReportCase{"signOnly", "- 42", std::nullopt},
        ReportCase{"twoSigns", "+-42 bytes", std::nullopt},
        ReportCase{"hexadecimal", "0x42 bytes", std::nullopt},
        ReportCase{"colour", "\x1b[1m42\x1b[0m bytes", std::nullopt},
        ReportCase{"nul", std::string("42\0 bytes", 9), std::nullopt},
        ReportCase{"notUtf8", "42 bytes \xff", std::nullopt}),
    caseName);

TEST_F(QuotaTest, launchFailureIsLoggedAndKeepsTheOldValue) {
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

TEST_F(QuotaTest, refreshAfterAFailedOneRunsAgain) {
  make();
  platform.childProcesses.failAllLaunches(
      {.stage = LaunchError::Stage::launch, .description = "no such file"});
  refresh("1000 bytes");
  platform.childProcesses.allowLaunches();
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaTest, exitStatusDoesNotMatter) {
  make();
  platform.childProcesses.script(quotaReport, ToolResult{.output = "5 bytes", .exitStatus = 64});
  monitor->refreshQuota();
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 5);
}

TEST_F(QuotaTest, refreshWhileOneHangsStartsNoOther) {
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

  // Until its result has arrived, the refresh goes on.
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 1U);
  platform.settle();
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
  EXPECT_EQ(refreshes(), 1U);
  monitor->refreshQuota();
  EXPECT_EQ(refreshes(), 2U);
}

TEST_F(QuotaTest, hangingQuotaDoesNotHoldUpTheStatusPoll) {
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

TEST_F(QuotaTest, refreshEndedByTheStopKeepsTheOldValueAndTheNextOneRuns) {
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

TEST_F(QuotaTest, refreshAfterTheStopStillRuns) {
  make();
  monitor->stop();
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaTest, answerWithoutACallbackIsStored) {
  make();
  monitor->onChange = nullptr;
  refresh("1000 bytes");
  EXPECT_EQ(monitor->quotaRemaining(), 1000);
}

TEST_F(QuotaTest, nothingAsksForTheQuotaAgainByItself) {
  start();
  advance(86400);
  platform.settle();
  EXPECT_EQ(refreshes(), 1U);
}

TEST_F(QuotaTest, refreshFromTheNotificationOfTheLastOneRuns) {
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
