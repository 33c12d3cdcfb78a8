#include "core/MonitorTest.h"

#include <algorithm>
#include <string>

namespace driftmark::test {
namespace {

class VanishedTransfersTest : public MonitorTest {
protected:
  void SetUp() override { start(); }

  std::size_t timers() const { return platform.mainQueue.timers().size(); }
};

TEST_F(VanishedTransfersTest, transferWhoseFileIsGoneIsDroppedByTheNextSweepAndLoggedOnce) {
  addFile("/kept.txt");
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

TEST_F(VanishedTransfersTest, transferWhoseFileVanishesLaterIsDroppedThen) {
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  advance(30);
  EXPECT_TRUE(active("/a.txt"));
  platform.fileSystem.remove(full("/a.txt"));
  advance(30);
  EXPECT_FALSE(active("/a.txt"));
}

TEST_F(VanishedTransfersTest, manyVanishedTransfersAreDroppedInOneSweep) {
  for (int number = 0; number < 100; ++number) {
    const std::string path = "/" + std::to_string(number);
    item(path, " \u2191 1%");
    if (number % 4 == 0)
      addFile(path);
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

TEST_F(VanishedTransfersTest, droppedTransferIsNotKnownAsCurrent) {
  item("/a.txt", " \u2601 \u2193 1%");
  advance(30);
  ASSERT_FALSE(active("/a.txt"));
  EXPECT_FALSE(item("/a.txt", " \u2601 not downloaded"));
  EXPECT_TRUE(monitor->recent().empty());
}

TEST_F(VanishedTransfersTest, everySweepNotifiesWhetherOrNotItDropsSomething) {
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
  advance(60);
  EXPECT_EQ(changes, 3);
}

TEST_F(VanishedTransfersTest, sweepNotifiesOnceHoweverManyItDrops) {
  item("/a.txt", " \u2191 1%");
  item("/b.txt", " \u2191 1%");
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
}

TEST_F(VanishedTransfersTest, timerRunsFromTheFirstTransferAndIsNotStartedTwice) {
  EXPECT_EQ(timers(), 0U);
  item("/a.txt", " \u2191 1%");
  EXPECT_EQ(timers(), 1U);
  advance(10);
  item("/b.txt", " \u2191 1%");
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  addFile("/a.txt");
  advance(20);
  EXPECT_EQ(changes, 1);
}

TEST_F(VanishedTransfersTest, timerEndsWithTheSweepThatFindsNothingActive) {
  completeUpload("/a.txt");
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

TEST_F(VanishedTransfersTest, timerEndsWithTheSweepThatDropsTheLastTransfer) {
  item("/a.txt", " \u2191 1%");
  advance(30);
  EXPECT_EQ(timers(), 0U);
}

TEST_F(VanishedTransfersTest, newTransferAfterTheTimersEndStartsANewOne) {
  completeUpload("/a.txt");
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

TEST_F(VanishedTransfersTest, transferThatStartsBeforeTheLastSweepKeepsTheTimer) {
  completeUpload("/a.txt");
  addFile("/b.txt");
  advance(20);
  item("/b.txt", " \u2191 1%");
  advance(10);
  EXPECT_EQ(timers(), 1U);
}

TEST_F(VanishedTransfersTest, stalledTransfersStayActive) {
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  advance(100000);
  EXPECT_TRUE(active("/a.txt"));
  EXPECT_TRUE(monitor->isStalled(transfer("/a.txt")));
}

TEST_F(VanishedTransfersTest, stopDoesNotEndTheTimer) {
  addFile("/a.txt");
  item("/a.txt", " \u2191 1%");
  monitor->stop();
  platform.settle();
  EXPECT_EQ(timers(), 1U);
  changes = 0;
  advance(30);
  EXPECT_EQ(changes, 1);
}

TEST_F(VanishedTransfersTest, idleMonitorChecksNoFiles) {
  completeUpload("/a.txt");
  advance(30);
  const int asked = platform.fileSystem.questions();
  advance(3600);
  EXPECT_EQ(platform.fileSystem.questions(), asked);
}

TEST_F(VanishedTransfersTest, transferWhoseFileCannotBeReachedIsDropped) {
  item(std::string("/a\0b.txt", 8), " \u2191 1%");
  addFile("/a");
  advance(30);
  EXPECT_TRUE(monitor->active().empty());
}

struct SweepCase {
  std::string threshold;
  double interval;
};

class SweepIntervalTest : public MonitorTest, public testing::WithParamInterface<SweepCase> {};

TEST_P(SweepIntervalTest, intervalIsAThirdOfTheThresholdBetweenFiveAndThirtySeconds) {
  platform.environment.set("DRIFTMARK_STALL_SECS", GetParam().threshold);
  platform.fileSystem.pretendEverythingExists();
  start();
  ASSERT_TRUE(platform.mainQueue.timers().empty());
  item("/a.txt", " \u2191 1%");
  const auto timers = platform.mainQueue.timers();
  ASSERT_EQ(timers.size(), 1U);
  EXPECT_DOUBLE_EQ(timers.front().interval.count(), GetParam().interval);
  EXPECT_LT(timers.front().tolerance, timers.front().interval);

  changes = 0;
  advance(GetParam().interval - 0.001);
  EXPECT_EQ(changes, 0);
  advance(0.002);
  EXPECT_EQ(changes, 1);
}

INSTANTIATE_TEST_SUITE_P(Values, SweepIntervalTest,
                         testing::Values(SweepCase{"300", 30}, SweepCase{"600", 30},
                                         SweepCase{"90", 30}, SweepCase{"90.3", 30},
                                         SweepCase{"60", 20}, SweepCase{"45", 15},
                                         SweepCase{"15.3", 5.1}, SweepCase{"15", 5},
                                         SweepCase{"12", 5}, SweepCase{"6", 5}, SweepCase{"0.5", 5},
                                         SweepCase{"0", 30}),
                         [](const auto& each) {
                           std::string name = "secs" + each.param.threshold;
                           for (char& c : name)
                             c = c == '.' ? '_' : c;
                           return name;
                         });

} // namespace
} // namespace driftmark::test
