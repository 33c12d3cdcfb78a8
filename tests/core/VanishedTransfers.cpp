#include "core/MonitorTest.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace driftmark::test {
namespace {

using namespace std::chrono_literals;

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
  EXPECT_DOUBLE_EQ(timers.front().tolerance.count(), GetParam().interval / 10);

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

/// A sweep of so many transfers that it takes several turns of the main queue: each look at the
/// clock takes a millisecond, so that a slice asks about ten files.
class SlicedSweepTest : public MonitorTest {
protected:
  static constexpr int count = 35;

  static std::string path(int number) { return "/file " + std::to_string(number); }

  void startTransfers() {
    start();
    for (int number = 0; number < count; ++number) {
      addFile(path(number));
      item(path(number), " \u2191 1%");
    }
    takeLog();
    platform.mainQueue.advance(Seconds(29.9));
    platform.clock.tickWhenRead(1ms);
    questionsBefore = platform.fileSystem.questions();
    changes = 0;
  }

  /// Runs `work` in the main queue between the first slice of the next sweep and the second.
  void afterTheFirstSlice(std::function<void()> work) {
    platform.mainQueue.after(Seconds(0.1), std::move(work));
  }

  void sweep() { platform.mainQueue.advance(Seconds(0.1)); }
  int asked() const { return platform.fileSystem.questions() - questionsBefore; }

  int questionsBefore = 0;
};

TEST_F(SlicedSweepTest, otherTasksRunBetweenSlices) {
  startTransfers();
  int askedThen = 0;
  int changesThen = -1;
  afterTheFirstSlice([&] {
    askedThen = asked();
    changesThen = changes;
  });
  sweep();
  EXPECT_EQ(askedThen, 10);
  EXPECT_EQ(changesThen, 0) << "the notification comes at the end";
}

TEST_F(SlicedSweepTest, everyTransferIsAskedAboutOnceAndOneNotificationFollows) {
  startTransfers();
  sweep();
  EXPECT_EQ(asked(), count);
  EXPECT_EQ(changes, 1);
}

TEST_F(SlicedSweepTest, fileThatIsGoneByItsSliceIsDropped) {
  startTransfers();
  afterTheFirstSlice([this] {
    platform.fileSystem.remove(full(path(0)));
    platform.fileSystem.remove(full(path(30)));
  });
  sweep();
  EXPECT_EQ(takeLog(), Lines{"Driftmark: dropped vanished transfer file 30"});
}

TEST_F(SlicedSweepTest, transferThatFinishesBetweenSlicesIsNotDropped) {
  startTransfers();
  afterTheFirstSlice([this] {
    platform.fileSystem.remove(full(path(30)));
    items().print(" o " + path(30) + " \u2601\r\n");
  });
  sweep();
  EXPECT_EQ(takeLog(), Lines{"Driftmark: synced file 30 (upload)"});
  EXPECT_EQ(asked(), count - 1);
}

TEST_F(SlicedSweepTest, transferThatStartsBetweenSlicesWaitsForTheNextSweep) {
  startTransfers();
  afterTheFirstSlice([this] { items().print(" o /new \u2191 1%\r\n"); });
  sweep();
  EXPECT_EQ(asked(), count);
  EXPECT_TRUE(active("/new"));
  platform.mainQueue.advance(Seconds(30));
  EXPECT_FALSE(active("/new"));
}

TEST_F(SlicedSweepTest, sweepEndsAllTheSameWhenTheClockIsSetBack) {
  startTransfers();
  afterTheFirstSlice([this] { platform.clock.jump(Seconds(-3600)); });
  sweep();
  EXPECT_EQ(asked(), count);
  EXPECT_EQ(changes, 1);
}

TEST_F(SlicedSweepTest, timerEndsAfterTheLastSlice) {
  startTransfers();
  for (int number = 0; number < count; ++number)
    platform.fileSystem.remove(full(path(number)));
  std::size_t timersThen = 0;
  afterTheFirstSlice([&] { timersThen = platform.mainQueue.timers().size(); });
  sweep();
  EXPECT_EQ(timersThen, 1U);
  EXPECT_TRUE(platform.mainQueue.timers().empty());
  EXPECT_TRUE(monitor->active().empty());
}

/// Hands tasks over forty seconds late, timers in time.
class LateQueue final : public MainQueue {
public:
  explicit LateQueue(MainQueue& queue) : queue_(queue) {}
  void async(Task task) override { queue_.after(Seconds(40), std::move(task)); }
  void after(Seconds delay, Task task) override { queue_.after(delay, std::move(task)); }
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override {
    return queue_.repeat(interval, tolerance, std::move(task));
  }

private:
  MainQueue& queue_;
};

TEST_F(SlicedSweepTest, timerThatFiresDuringASweepIsDropped) {
  LateQueue late(platform.mainQueue);
  SyncMonitor::Ports ports{platform.clock,           late,
                           platform.backgroundQueue, platform.childProcesses,
                           platform.systemLog,       platform.fileSystem,
                           platform.environment,     platform.text};
  monitor = SyncMonitor::make(ports);
  monitor->start();
  for (int number = 0; number < count; ++number)
    items().print(" o " + path(number) + " \u2191 1%\r\n");
  platform.mainQueue.runAll();
  platform.clock.tickWhenRead(1ms);
  platform.mainQueue.advance(Seconds(30.5));
  EXPECT_EQ(asked(), 10) << "the first slice runs in the timer's own turn";
  platform.mainQueue.advance(Seconds(35));
  EXPECT_EQ(asked(), 10) << "the timer fired again";
  platform.mainQueue.advance(Seconds(10));
  EXPECT_EQ(asked(), 20) << "the second slice";
  monitor.reset();
}

} // namespace
} // namespace driftmark::test
