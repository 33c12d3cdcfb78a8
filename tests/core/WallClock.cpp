// What a wall clock that is set back by a day, or that has jumped forward by a night when the
// system wakes up, does to everything that is dated. Timers count the time that passes and notice
// neither.

#include "core/MonitorTest.h"

#include <optional>
#include <string>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr double day = 86'400;
constexpr double night = 8 * 3600;

const std::string cloud = " \u2601";

class WallClockTest : public MonitorTest {
protected:
  void SetUp() override {
    platform.fileSystem.pretendEverythingExists();
    start();
  }

  void setBackByADay() { jump(-day); }
  void wakeUpAfterANight() { jump(night); }

  /// Lets time pass, and the polls that become due run.
  void pass(double seconds) {
    advance(seconds);
    platform.settle();
  }

  std::size_t polls() const { return platform.childProcesses.runs(statusReport).size(); }
};

// ---- hold ----

TEST_F(WallClockTest, holdLastsUntilItsDateComesAgain) {
  completeUpload("/a");
  setBackByADay();
  advance(3.1);
  EXPECT_EQ(monitor->overall(), OverallState::uploading) << "the redraw after the hold";
  advance(30);
  changes = 0;
  advance(day - 30.2);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(0.1);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_EQ(changes, 0) << "nothing redraws at that date";
}

TEST_F(WallClockTest, completionAfterTheStepBackIsHeldForThreeSeconds) {
  completeUpload("/a");
  setBackByADay();
  completeDownload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  jump(3);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(WallClockTest, holdIsOverAfterTheNightAndItsRedrawComesInTime) {
  completeUpload("/a");
  wakeUpAfterANight();
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  changes = 0;
  advance(3.099);
  EXPECT_EQ(changes, 0);
  advance(0.001);
  EXPECT_EQ(changes, 1);
}

// ---- global window ----

TEST_F(WallClockTest, globalTransferCountsUntilItsWindowComesAgain) {
  global(fraction("0.5", "4096"));
  setBackByADay();
  advance(60.5);
  EXPECT_TRUE(monitor->globalActivity()) << "the expiry check";
  jump(day - 0.501);
  EXPECT_EQ(monitor->overall(), OverallState::syncing);
  jump(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(WallClockTest, globalReportAfterTheStepBackCountsForAMinute) {
  global(fraction("0.5", "4096"));
  setBackByADay();
  global(fraction("0.6", "4096"));
  jump(59.999);
  EXPECT_TRUE(monitor->globalActivity());
  jump(0.001);
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
}

TEST_F(WallClockTest, globalTransferIsNewAgainAfterTheNight) {
  global(fraction("0.5", "4096"));
  wakeUpAfterANight();
  EXPECT_EQ(monitor->globalActivity(), std::nullopt);
  takeLog();
  EXPECT_TRUE(global(fraction("0.6", "4096")));
  EXPECT_THAT(takeLog(), ElementsAre("Driftmark: global transfer started (4096 bytes)"));
  EXPECT_EQ(monitor->globalActivity(), (GlobalActivity{.count = 1, .bytes = 4096}));
}

// ---- stalls ----

TEST_F(WallClockTest, transferFromBeforeTheStepBackStallsADayLater) {
  startUpload("/a");
  setBackByADay();
  jump(day + 300);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  jump(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_F(WallClockTest, lineAfterTheStepBackStartsTheStallClockAnew) {
  startUpload("/a");
  setBackByADay();
  startUpload("/a");
  jump(300);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  jump(1);
  EXPECT_THAT(monitor->longestStall(), Optional(301.0));
}

TEST_F(WallClockTest, everyTransferIsStalledAfterTheNightAndARestartIsOffered) {
  startUpload("/a");
  startDownload("/b");
  wakeUpAfterANight();
  EXPECT_EQ(monitor->overall(), OverallState::attention);
  EXPECT_EQ(monitor->stalledCount(), 2U);
  EXPECT_THAT(monitor->longestStall(), Optional(night));
  EXPECT_TRUE(monitor->shouldOfferRestart());
}

TEST_F(WallClockTest, nextLineAfterWakingUpEndsTheStallOfItsTransferAlone) {
  startUpload("/a", "10%");
  startDownload("/b");
  wakeUpAfterANight();
  startUpload("/a", "10%");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(transfer("/a").lastUpdate, now());
  EXPECT_EQ(monitor->stalledCount(), 1U);
  EXPECT_TRUE(monitor->shouldOfferRestart()) << "for the other one";
  startDownload("/b");
  EXPECT_EQ(monitor->overall(), OverallState::both);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(WallClockTest, transferThatFinishesOnWakingUpIsDatedThen) {
  startUpload("/a");
  wakeUpAfterANight();
  item("/a", cloud);
  EXPECT_EQ(latest().date, now());
  EXPECT_EQ(monitor->overall(), OverallState::uploading) << "the hold";
}

// ---- timers ----

TEST_F(WallClockTest, pollsKeepTheirIntervalWhateverTheClockDoes) {
  platform.childProcesses.script(statusReport, "> upload{9} active\n");
  monitor->start();
  platform.settle();
  const std::size_t before = polls();
  setBackByADay();
  pass(19.999);
  EXPECT_EQ(polls(), before);
  pass(0.001);
  EXPECT_EQ(polls(), before + 1);
  pass(10);
  wakeUpAfterANight();
  pass(9.999);
  EXPECT_EQ(polls(), before + 1);
  pass(0.001);
  EXPECT_EQ(polls(), before + 2);
}

TEST_F(WallClockTest, pollsContinueAsLongAsTheGlobalTransferCounts) {
  global(fraction("0.5", "4096"));
  platform.settle();
  setBackByADay();
  const std::size_t before = polls();
  for (std::size_t poll = 1; poll <= 30; ++poll) {
    pass(20);
    EXPECT_EQ(polls(), before + poll);
  }
  jump(day);
  pass(20);
  EXPECT_EQ(polls(), before + 31);
  pass(3600);
  EXPECT_EQ(polls(), before + 31);
}

TEST_F(WallClockTest, pollChainEndsWithThePollAfterWakingUp) {
  global(fraction("0.5", "4096"));
  platform.settle();
  const std::size_t before = polls();
  wakeUpAfterANight();
  pass(20);
  EXPECT_EQ(polls(), before + 1);
  pass(3600);
  EXPECT_EQ(polls(), before + 1);
}

TEST_F(WallClockTest, sweepsKeepTheirInterval) {
  startUpload("/a");
  setBackByADay();
  changes = 0;
  advance(29.999);
  EXPECT_EQ(changes, 0);
  advance(0.001);
  EXPECT_EQ(changes, 1);
  wakeUpAfterANight();
  advance(30);
  EXPECT_EQ(changes, 2);
}

// ---- order ----

TEST_F(WallClockTest, recentListKeepsTheOrderOfArrival) {
  completeUpload("/a");
  setBackByADay();
  completeUpload("/b");
  ASSERT_EQ(monitor->recent().size(), 2U);
  EXPECT_EQ(monitor->recent()[0].path, full("/b"));
  EXPECT_LT(monitor->recent()[0].date, monitor->recent()[1].date);
}

TEST_F(WallClockTest, transferFromBeforeTheStepBackIsListedAboveLaterOnes) {
  startUpload("/a");
  setBackByADay();
  startUpload("/b");
  ASSERT_EQ(monitor->active().size(), 2U);
  EXPECT_EQ(monitor->active().begin()->path, full("/a"));
}

} // namespace
} // namespace driftmark::test
