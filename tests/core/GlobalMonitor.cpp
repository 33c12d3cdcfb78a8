#include "core/MonitorTest.h"

#include <optional>
#include <string>

namespace driftmark::test {
namespace {

class GlobalMonitorTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  std::size_t polls() const { return platform.childProcesses.runs(statusReport).size(); }

  /// How many expiry checks are scheduled.
  std::size_t expiryChecks() const {
    std::size_t count = 0;
    for (const Seconds delay : platform.mainQueue.waiting())
      count += delay > Seconds(60) ? 1 : 0;
    return count;
  }
};

TEST_F(GlobalMonitorTest, lineOfANewTransferListsItAndStartsPolling) {
  const std::size_t before = polls();
  EXPECT_TRUE(global(fraction("0.25", "4096")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 4096}));
  EXPECT_EQ(takeLog(), Lines{"Driftmark: global transfer started (4096 bytes)"});
  EXPECT_EQ(platform.mainQueue.waiting(), std::vector<Seconds>{Seconds(60.5)});
  EXPECT_EQ(polls(), before + 1);
}

TEST_F(GlobalMonitorTest, knownTransferIsRefreshedSilently) {
  global(fraction("0.25", "4096"));
  takeLog();
  advance(10);
  EXPECT_FALSE(global(fraction("0.25", "4096")));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 4096}));
  advance(59);
  EXPECT_TRUE(monitor->globalActivity());
  advance(1);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, finishedTransferIsRemoved) {
  global(fraction("0.25", "4096"));
  takeLog();
  EXPECT_TRUE(global(fraction("1.0", "4096")));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(GlobalMonitorTest, finishedLineSchedulesNothingAndStartsNoPoll) {
  const std::size_t before = polls();
  EXPECT_FALSE(global(fraction("1.0", "4096")));
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
  EXPECT_EQ(polls(), before);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, finishingOneOfTwoIsNoChange) {
  global(fraction("0.5", "4096"));
  EXPECT_FALSE(global(fraction("0.5", "100")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 2, .bytes = 4196}));
  EXPECT_FALSE(global(fraction("1", "4096")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 100}));
}

TEST_F(GlobalMonitorTest, fractionOfOneOrMoreIsFinished) {
  for (const std::string done : {"1", "1.0", "1.000000", "1.5", "27", "01"}) {
    global(fraction("0.5", "4096"));
    EXPECT_TRUE(global(fraction(done, "4096"))) << done;
    EXPECT_EQ(monitor->globalActivity(), std::nullopt) << done;
  }
  for (const std::string done : {"0", "0.0", "0.999999999", ".5", "0."}) {
    EXPECT_TRUE(global(fraction(done, "4096"))) << done;
    EXPECT_TRUE(monitor->globalActivity()) << done;
    global(fraction("1", "4096"));
  }
}

TEST_F(GlobalMonitorTest, finishedLineOfAnUnknownTotalChangesNothing) {
  global(fraction("0.5", "4096"));
  takeLog();
  EXPECT_FALSE(global(fraction("1.0", "77")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 4096}));
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(GlobalMonitorTest, finishedLineIsAChangeWhenTheLastEntryAgesOutMeanwhile) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(60));
  platform.clock.move(Date::duration(-1));
  platform.clock.tickWhenRead(Date::duration(1));
  EXPECT_TRUE(global(fraction("1.0", "77")));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, finishedLineIsNoChangeWhenTheLastEntryHadAgedOutBefore) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(60));
  EXPECT_FALSE(global(fraction("1.0", "77")));
}

TEST_F(GlobalMonitorTest, newTransferAfterTheOldOnesAgedOutIsAChange) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(61));
  EXPECT_TRUE(global(fraction("0.5", "77")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 77}));
}

TEST_F(GlobalMonitorTest, transferThatAgedOutIsNewAgain) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(61));
  takeLog();
  EXPECT_TRUE(global(fraction("0.5", "4096")));
  EXPECT_EQ(takeLog(), Lines{"Driftmark: global transfer started (4096 bytes)"});
}

TEST_F(GlobalMonitorTest, transfersOfEqualSizeAreOne) {
  global(fraction("0.1", "4096"));
  global(fraction("0.7", "4096"));
  EXPECT_EQ(monitor->globalActivity().value().count, 1);
  EXPECT_TRUE(global(fraction("1.0", "4096")));
}

TEST_F(GlobalMonitorTest, colourCodesAroundTheMarkersAreRemoved) {
  EXPECT_TRUE(global("\x1b[32mFraction\x1b[0m completed: \x1b[1m0.25\x1b[0m / \x1b[;mCompleted: 1 "
                     "of 40\x1b[0m96"));
  EXPECT_EQ(monitor->globalActivity().value().bytes, 4096);
}

TEST_F(GlobalMonitorTest, reportCountsAnywhereInTheLine) {
  EXPECT_TRUE(global("<NSProgress: 0x600> : Parent: 0x0 / Fraction completed: 0.2500 / Completed: "
                     "25 of 100  (com~apple~CloudDocs)"));
  EXPECT_EQ(monitor->globalActivity().value().bytes, 100);
}

TEST_F(GlobalMonitorTest, firstOfSeveralReportsInALineCounts) {
  EXPECT_TRUE(global(fraction("0.5", "100") + " " + fraction("0.5", "200")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 100}));
}

TEST_F(GlobalMonitorTest, linesThatDoNotMatchAreIgnored) {
  const std::vector<std::string> lines{
      "",
      "no progress yet",
      "Fraction completed: / Completed: 1 of 2",
      "Fraction completed: x / Completed: 1 of 2",
      "Fraction completed: -0.5 / Completed: 1 of 2",
      "fraction completed: 0.5 / completed: 1 of 2",
      "Fraction completed:0.5 / Completed: 1 of 2",
      "Fraction completed: 0.5 / Completed: 1.5 of 2",
      "Fraction completed: 0.5 / Completed: 1 of -2",
      "Fraction completed: 0.5 / Completed: of 2",
      "Fraction completed: 0.5 / Completed: 1 of ",
      "Fraction completed: 0,5 / Completed: 1 of 2",
      "Fraction completed: 0.5  / Completed: 1 of 2",
  };
  for (const std::string& line : lines)
    EXPECT_FALSE(global(line)) << line;
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
}

TEST_F(GlobalMonitorTest, numbersThatDoNotConvertAreIgnored) {
  global(fraction("0.5", "4096"));
  takeLog();
  const std::size_t waiting = platform.mainQueue.waiting().size();
  for (const std::string done : {"0.2.5", "..", ".", "1.0.0"})
    EXPECT_FALSE(global(fraction(done, "4096"))) << done;
  EXPECT_FALSE(global(fraction("0.5", "9223372036854775808")));
  EXPECT_FALSE(global(fraction("0.5", "99999999999999999999999999")));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 4096}));
  EXPECT_EQ(takeLog(), Lines{});
  EXPECT_EQ(platform.mainQueue.waiting().size(), waiting);
}

TEST_F(GlobalMonitorTest, completedCountNeedNotConvert) {
  EXPECT_TRUE(global(
      "Fraction completed: 0.5 / Completed: 99999999999999999999999999 of 9223372036854775807"));
  EXPECT_EQ(monitor->globalActivity().value().bytes, 9223372036854775807);
}

TEST_F(GlobalMonitorTest, totalOfZeroIsIgnored) {
  const std::size_t before = polls();
  EXPECT_FALSE(global(fraction("0.5", "0")));
  EXPECT_FALSE(global(fraction("0.5", "000")));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_EQ(polls(), before);
  EXPECT_TRUE(global(fraction("0.5", "1")));
}

TEST_F(GlobalMonitorTest, ignoredLineDoesNotPrune) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(60));
  EXPECT_FALSE(global(fraction("0.5", "0")));
  platform.clock.jump(Seconds(-1));
  EXPECT_TRUE(monitor->globalActivity());
}

TEST_F(GlobalMonitorTest, matchingLinePrunesWhatIsOutOfTheWindow) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(60));
  EXPECT_TRUE(global(fraction("0.5", "77")));
  platform.clock.jump(Seconds(-1));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 77}));
}

TEST_F(GlobalMonitorTest, entryCountsForLessThanSixtySeconds) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(59));
  EXPECT_TRUE(monitor->globalActivity());
  EXPECT_EQ(monitor->overall(), OverallState::syncing);
  platform.clock.jump(Seconds(0.999));
  EXPECT_TRUE(monitor->globalActivity());
  platform.clock.jump(Seconds(0.001));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(GlobalMonitorTest, readingTheActivityRemovesNothing) {
  global(fraction("0.5", "4096"));
  platform.clock.jump(Seconds(60));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  platform.clock.jump(Seconds(-1));
  EXPECT_TRUE(monitor->globalActivity());
}

TEST_F(GlobalMonitorTest, agedEntriesDoNotCountBesideFreshOnes) {
  global(fraction("0.5", "4096"));
  advance(30);
  global(fraction("0.5", "100"));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 2, .bytes = 4196}));
  platform.clock.jump(Seconds(30));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 100}));
}

TEST_F(GlobalMonitorTest, expiryCheckNotifiesAndRemovesOldEntries) {
  global(fraction("0.5", "4096"));
  platform.settle();
  changes = 0;
  advance(60.499);
  EXPECT_EQ(changes, 0);
  advance(0.001);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  EXPECT_EQ(expiryChecks(), 0U);
  advance(600);
  EXPECT_EQ(changes, 1);
}

TEST_F(GlobalMonitorTest, onlyOneExpiryCheckWaits) {
  global(fraction("0.5", "4096"));
  global(fraction("0.5", "100"));
  global(fraction("0.6", "4096"));
  EXPECT_EQ(expiryChecks(), 1U);
}

TEST_F(GlobalMonitorTest, expiryCheckRepeatsWhileTransfersReport) {
  global(fraction("0.5", "4096"));
  advance(10);
  global(fraction("0.6", "4096"));
  changes = 0;
  advance(50.5);
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(monitor->globalActivity());
  EXPECT_EQ(expiryChecks(), 1U);
  advance(60.5);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(expiryChecks(), 0U);
}

TEST_F(GlobalMonitorTest, expiryCheckAfterEverythingFinishedNotifiesOnceMore) {
  global(fraction("0.5", "4096"));
  global(fraction("1.0", "4096"));
  changes = 0;
  advance(60.5);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(expiryChecks(), 0U);
}

TEST_F(GlobalMonitorTest, transferAfterTheExpirySchedulesACheckAgain) {
  global(fraction("0.5", "4096"));
  advance(61);
  EXPECT_EQ(expiryChecks(), 0U);
  global(fraction("0.5", "4096"));
  EXPECT_EQ(expiryChecks(), 1U);
}

TEST_F(GlobalMonitorTest, expiryCheckRunsAfterStopToo) {
  global(fraction("0.5", "4096"));
  monitor->stop();
  platform.settle();
  changes = 0;
  advance(60.5);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, expiryCheckWithoutACallbackRemovesOldEntries) {
  global(fraction("0.5", "4096"));
  monitor->onChange = nullptr;
  advance(60.5);
  platform.clock.jump(Seconds(-30));
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, restartOfTheFeedKeepsTheEntries) {
  global(fraction("0.5", "4096"));
  globals().exit();
  advance(10);
  EXPECT_EQ(monitor->globalActivity().value().bytes, 4096);
  EXPECT_FALSE(global(fraction("0.6", "4096")));
}

TEST_F(GlobalMonitorTest, chunkThatStartsAndFinishesATransferNotifiesOnce) {
  globals().print(fraction("0.5", "1") + "\n" + fraction("1.0", "1") + "\n");
  platform.mainQueue.runAll();
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(GlobalMonitorTest, largestSumThatFitsIsReported) {
  global(fraction("0.5", "9223372036854775806"));
  global(fraction("0.5", "1"));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 2, .bytes = 9223372036854775807}));
}

using GlobalMonitorDeathTest = GlobalMonitorTest;

TEST_F(GlobalMonitorDeathTest, sumBeyondSixtyFourBitsEndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  global(fraction("0.5", "9223372036854775807"));
  EXPECT_DEATH(global(fraction("0.5", "1")), "fatal error");
}

} // namespace
} // namespace driftmark::test
