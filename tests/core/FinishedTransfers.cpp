#include "core/MonitorTest.h"

#include <string>
#include <vector>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

class FinishedTransfersTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  std::vector<std::string> recentPaths() const {
    std::vector<std::string> paths;
    for (const CompletedItem& item : monitor->recent())
      paths.push_back(item.path);
    return paths;
  }
};

// ---- completion and the recent list ----

TEST_F(FinishedTransfersTest, completionIsRecordedWithItsDirectionAndMoment) {
  completeUpload("/docs/a.txt");
  platform.clock.jump(Seconds(1));
  completeDownload("/docs/b.txt");
  ASSERT_EQ(recentPaths(), (Lines{full("/docs/b.txt"), full("/docs/a.txt")}));
  EXPECT_EQ(monitor->recent()[0].kind, RecentKind::download);
  EXPECT_EQ(monitor->recent()[0].date, now());
  EXPECT_EQ(monitor->recent()[1].kind, RecentKind::upload);
  EXPECT_EQ(monitor->recent()[1].date, earlier(now(), Seconds(1)));
  EXPECT_EQ(takeLog(),
            (Lines{"Driftmark: uploading a.txt", "Driftmark: synced a.txt (upload)",
                   "Driftmark: downloading b.txt", "Driftmark: synced b.txt (download)"}));
}

TEST_F(FinishedTransfersTest, directionOfTheLastProgressLineIsRecorded) {
  item("/a.txt", " \u2191 1%");
  item("/a.txt", " \u2601 \u2193 1%");
  item("/a.txt", cloud);
  EXPECT_EQ(latest().kind, RecentKind::download);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
}

TEST_F(FinishedTransfersTest, pathThatFinishesTwiceIsListedOnceAndFirst) {
  completeUpload("/a.txt");
  completeUpload("/b.txt");
  platform.clock.jump(Seconds(4));
  completeDownload("/a.txt");
  ASSERT_EQ(recentPaths(), (Lines{full("/a.txt"), full("/b.txt")}));
  EXPECT_EQ(latest().kind, RecentKind::download);
  EXPECT_EQ(latest().date, now());
}

TEST_F(FinishedTransfersTest, evictionReplacesTheCompletionOfItsPath) {
  completeUpload("/a.txt");
  completeUpload("/b.txt");
  item("/a.txt", " \u2601 not downloaded");
  ASSERT_EQ(recentPaths(), (Lines{full("/a.txt"), full("/b.txt")}));
  EXPECT_EQ(latest().kind, RecentKind::evicted);
}

TEST_F(FinishedTransfersTest, elevenCompletionsLeaveTheTenNewest) {
  Lines expected;
  for (int number = 1; number <= 11; ++number) {
    completeUpload("/" + std::to_string(number));
    expected.insert(expected.begin(), full("/" + std::to_string(number)));
    if (number == 10) {
      EXPECT_EQ(recentPaths(), expected);
    }
  }
  expected.pop_back();
  EXPECT_EQ(recentPaths(), expected);
}

TEST_F(FinishedTransfersTest, repeatedPathDoesNotPushTheOldestOut) {
  for (int number = 1; number <= 10; ++number)
    completeUpload("/" + std::to_string(number));
  completeUpload("/5");
  EXPECT_EQ(recentPaths(), (Lines{full("/5"), full("/10"), full("/9"), full("/8"), full("/7"),
                                  full("/6"), full("/4"), full("/3"), full("/2"), full("/1")}));
}

TEST_F(FinishedTransfersTest, recentPathsAreComparedByteForByte) {
  completeUpload("/caf\u00e9");
  completeUpload("/cafe\u0301");
  EXPECT_EQ(monitor->recent().size(), 2U);
}

// ---- hold ----

TEST_F(FinishedTransfersTest, finishedDirectionIsHeldForThreeSeconds) {
  completeUpload("/a.txt");
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(2.999);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(0.001);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  advance(0.1);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(FinishedTransfersTest, changeIsNotifiedOnceMoreWhenTheHoldIsOver) {
  completeUpload("/a.txt");
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

TEST_F(FinishedTransfersTest, laterCompletionReplacesTheHold) {
  completeUpload("/a.txt");
  advance(2);
  completeDownload("/b.txt");
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  advance(1.5);
  EXPECT_EQ(monitor->overall(), OverallState::downloading);
  advance(1.5);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(FinishedTransfersTest, everyCompletionIsFollowedByItsOwnRedraw) {
  completeUpload("/a.txt");
  advance(1);
  completeUpload("/b.txt");
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

TEST_F(FinishedTransfersTest, redrawWithoutACallbackDoesNothing) {
  completeUpload("/a.txt");
  monitor->onChange = nullptr;
  advance(3.1);
  EXPECT_EQ(monitor->overall(), OverallState::idle);
}

TEST_F(FinishedTransfersTest, evictionAndCancelledDownloadHoldNothing) {
  item("/a.txt", cloud);
  item("/a.txt", " \u2601 not downloaded");
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  item("/b.txt", " \u2601 \u2193 1%");
  item("/b.txt", " \u2601 not downloaded");
  EXPECT_EQ(monitor->overall(), OverallState::idle);
  EXPECT_TRUE(platform.mainQueue.waiting().empty());
}

} // namespace
} // namespace driftmark::test
