#include "core/MonitorTest.h"

#include <algorithm>
#include <string>
#include <vector>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

class TransferTrackingTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  void upload(const std::string& path) {
    item(path, " \u2191 1%");
    item(path, cloud);
  }

  void download(const std::string& path) {
    item(path, " \u2601 \u2193 1%");
    item(path, cloud);
  }

  std::vector<std::string> recentPaths() const {
    std::vector<std::string> paths;
    for (const CompletedItem& item : monitor->recent())
      paths.push_back(item.path);
    return paths;
  }

  std::size_t timers() const { return platform.mainQueue.timers().size(); }
};

// ---- completion and the recent list ----

TEST_F(TransferTrackingTest, completionIsRecordedWithItsDirectionAndMoment) {
  upload("/docs/a.txt");
  platform.clock.jump(Seconds(1));
  download("/docs/b.txt");
  ASSERT_EQ(recentPaths(), (Lines{full("/docs/b.txt"), full("/docs/a.txt")}));
  EXPECT_EQ(monitor->recent()[0].kind, RecentKind::download);
  EXPECT_EQ(monitor->recent()[0].date, now());
  EXPECT_EQ(monitor->recent()[1].kind, RecentKind::upload);
  EXPECT_EQ(monitor->recent()[1].date, earlier(now(), Seconds(1)));
  EXPECT_EQ(takeLog(),
            (Lines{"Driftmark: uploading a.txt", "Driftmark: synced a.txt (upload)",
                   "Driftmark: downloading b.txt", "Driftmark: synced b.txt (download)"}));
}

TEST_F(TransferTrackingTest, directionOfTheLastProgressLineIsTheOneRecorded) {
  item("/a.txt", " \u2191 1%");
  item("/a.txt", " \u2601 \u2193 1%");
  item("/a.txt", cloud);
  EXPECT_EQ(latest().kind, RecentKind::download);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(TransferTrackingTest, pathThatFinishesTwiceIsListedOnceAtTheFront) {
  upload("/a.txt");
  upload("/b.txt");
  platform.clock.jump(Seconds(4));
  download("/a.txt");
  ASSERT_EQ(recentPaths(), (Lines{full("/a.txt"), full("/b.txt")}));
  EXPECT_EQ(latest().kind, RecentKind::download);
  EXPECT_EQ(latest().date, now());
}

TEST_F(TransferTrackingTest, evictionTakesThePlaceOfTheCompletionOfItsPath) {
  upload("/a.txt");
  upload("/b.txt");
  item("/a.txt", " \u2601 not downloaded");
  ASSERT_EQ(recentPaths(), (Lines{full("/a.txt"), full("/b.txt")}));
  EXPECT_EQ(latest().kind, RecentKind::evicted);
}

TEST_F(TransferTrackingTest, elevenCompletionsLeaveTheTenNewest) {
  Lines expected;
  for (int number = 1; number <= 11; ++number) {
    upload("/" + std::to_string(number));
    expected.insert(expected.begin(), full("/" + std::to_string(number)));
    if (number == 10) {
      EXPECT_EQ(recentPaths(), expected);
    }
  }
  expected.pop_back();
  EXPECT_EQ(recentPaths(), expected);
}

TEST_F(TransferTrackingTest, repeatedPathDoesNotPushTheOldestOut) {
  for (int number = 1; number <= 10; ++number)
    upload("/" + std::to_string(number));
  upload("/5");
  EXPECT_EQ(recentPaths(), (Lines{full("/5"), full("/10"), full("/9"), full("/8"), full("/7"),
                                  full("/6"), full("/4"), full("/3"), full("/2"), full("/1")}));
}

TEST_F(TransferTrackingTest, recentPathsAreComparedByteForByte) {
  upload("/caf\u00e9");
  upload("/cafe\u0301");
  EXPECT_EQ(monitor->recent().size(), 2U);
}

// ---- hold ----

TEST_F(TransferTrackingTest, finishedDirectionIsHeldForThreeSeconds) {
  upload("/a.txt");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(2.999);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  advance(0.1);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(TransferTrackingTest, changeIsNotifiedOnceMoreWhenTheHoldIsOver) {
  upload("/a.txt");
  changes = 0;
  advance(3.099);
  EXPECT_EQ(changes, 0);
  OverallState seen = OverallState::attention;
  monitor->onChange = [&] {
    ++changes;
    seen = monitor->overall();
  };
  advance(0.001);
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(seen, OverallState::idle);
  advance(20);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, laterCompletionTakesTheHoldOver) {
  upload("/a.txt");
  advance(2);
  download("/b.txt");
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  advance(1.5);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  advance(1.5);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(TransferTrackingTest, everyCompletionIsFollowedByItsOwnRedraw) {
  upload("/a.txt");
  advance(1);
  upload("/b.txt");
  changes = 0;
  advance(2.1);
  EXPECT_EQ(changes, 1);
  advance(0.999);
  EXPECT_EQ(changes, 1);
  advance(0.001);
  EXPECT_EQ(changes, 2);
  advance(20);
  EXPECT_EQ(changes, 2);
}

TEST_F(TransferTrackingTest, redrawWithoutACallbackDoesNothing) {
  upload("/a.txt");
  monitor->onChange = nullptr;
  advance(3.1);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(TransferTrackingTest, evictionAndCancelledDownloadHoldNothing) {
  item("/a.txt", cloud);
  item("/a.txt", " \u2601 not downloaded");
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  item("/b.txt", " \u2601 \u2193 1%");
  item("/b.txt", " \u2601 not downloaded");
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
}

// ---- sweep ----

TEST_F(TransferTrackingTest, transferWhoseFileIsGoneIsDroppedByTheNextSweepAndLoggedOnce) {
  exists("/kept.txt");
  item("/kept.txt", " \u2191 1%");
  item("/folder/gone.txt", " \u2191 1%");
  takeLog();
  advance(29.9);
  EXPECT_TRUE(active("/folder/gone.txt"));
  advance(0.1);
  EXPECT_FALSE(active("/folder/gone.txt"));
  EXPECT_TRUE(active("/kept.txt"));
  EXPECT_TRUE(monitor->recent().empty());
  EXPECT_EQ(takeLog(), Lines{"Driftmark: dropped vanished transfer gone.txt"});
  advance(90);
  EXPECT_EQ(takeLog(), Lines{});
}

TEST_F(TransferTrackingTest, fileThatVanishesLaterIsDroppedThen) {
  exists("/a.txt");
  item("/a.txt", " \u2191 1%");
  advance(30);
  EXPECT_TRUE(active("/a.txt"));
  platform.fileSystem.remove(full("/a.txt"));
  advance(30);
  EXPECT_FALSE(active("/a.txt"));
}

TEST_F(TransferTrackingTest, manyVanishedTransfersAreDroppedInOneSweep) {
  for (int number = 0; number < 100; ++number) {
    const std::string path = "/" + std::to_string(number);
    item(path, " \u2191 1%");
    if (number % 4 == 0)
      exists(path);
  }
  takeLog();
  advance(30);
  EXPECT_EQ(monitor->active().size(), 25U);
  Lines lines = takeLog();
  std::sort(lines.begin(), lines.end());
  Lines expected;
  for (int number = 0; number < 100; ++number)
    if (number % 4 != 0)
      expected.push_back("Driftmark: dropped vanished transfer " + std::to_string(number));
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(lines, expected);
}

TEST_F(TransferTrackingTest, droppedTransferIsNotKnownAsCurrent) {
  item("/a.txt", " \u2601 \u2193 1%");
  advance(30);
  ASSERT_FALSE(active("/a.txt"));
  EXPECT_FALSE(item("/a.txt", " \u2601 not downloaded"));
  EXPECT_TRUE(monitor->recent().empty());
}

TEST_F(TransferTrackingTest, everySweepNotifiesWhetherOrNotItDropsSomething) {
  exists("/a.txt");
  item("/a.txt", " \u2191 1%");
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
  advance(60);
  EXPECT_EQ(changes, 3);
}

TEST_F(TransferTrackingTest, sweepNotifiesOnceHoweverManyItDrops) {
  item("/a.txt", " \u2191 1%");
  item("/b.txt", " \u2191 1%");
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, timerRunsFromTheFirstTransferAndIsNotStartedTwice) {
  EXPECT_EQ(timers(), 0U);
  item("/a.txt", " \u2191 1%");
  EXPECT_EQ(timers(), 1U);
  advance(10);
  item("/b.txt", " \u2191 1%");
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  exists("/a.txt");
  advance(20);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, timerEndsWithTheSweepThatFindsNothingActive) {
  upload("/a.txt");
  EXPECT_EQ(timers(), 1U);
  advance(29.9);
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  advance(0.1);
  EXPECT_EQ(timers(), 0U);
  EXPECT_EQ(changes, 1);
  advance(300);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, timerEndsWithTheSweepThatDropsTheLastTransfer) {
  item("/a.txt", " \u2191 1%");
  advance(30);
  EXPECT_EQ(timers(), 0U);
}

TEST_F(TransferTrackingTest, newTransferAfterTheTimersEndStartsANewOne) {
  upload("/a.txt");
  advance(40);
  ASSERT_EQ(timers(), 0U);
  item("/b.txt", " \u2191 1%");
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  advance(29.9);
  EXPECT_EQ(changes, 0);
  advance(0.1);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, transferThatStartsBeforeTheLastSweepKeepsTheTimer) {
  upload("/a.txt");
  exists("/b.txt");
  advance(20);
  item("/b.txt", " \u2191 1%");
  advance(10);
  EXPECT_EQ(timers(), 1U);
}

TEST_F(TransferTrackingTest, stalledTransfersStayActive) {
  exists("/a.txt");
  item("/a.txt", " \u2191 1%");
  advance(100000);
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_TRUE(monitor->isStalled(transfer("/a.txt")));
}

TEST_F(TransferTrackingTest, stopDoesNotEndTheTimer) {
  exists("/a.txt");
  item("/a.txt", " \u2191 1%");
  monitor->stop();
  platform.settle();
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
}

TEST_F(TransferTrackingTest, idleMonitorAsksForNoFiles) {
  upload("/a.txt");
  advance(30);
  const int asked = platform.fileSystem.questions();
  advance(3600);
  EXPECT_EQ(platform.fileSystem.questions(), asked);
}

TEST_F(TransferTrackingTest, fileOfATransferThatCannotBeReachedIsDropped) {
  item(std::string("/a\0b.txt", 8), " \u2191 1%");
  exists("/a");
  advance(30);
  EXPECT_TRUE(monitor->active().empty());
}

} // namespace
} // namespace driftmark::test
