#include "support/DelayedTasks.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using testing::ElementsAre;

/// A clock that the test moves, and what the timer was last armed for.
class VirtualAlarm final : public DelayedTasks::Alarm {
public:
  DelayedTasks::Time now() const override { return now_; }
  void arm(DelayedTasks::Time due, DelayedTasks::Duration tolerance) override {
    ++armed;
    next = due;
    window = tolerance;
  }
  void disarm() override { next.reset(); }

  void move(nanoseconds distance) { now_ += distance; }

  std::optional<DelayedTasks::Time> next;
  DelayedTasks::Duration window{};
  int armed = 0;

private:
  DelayedTasks::Time now_ = hours(1000);
};

/// Runs tasks when the test says so.
class PlainQueue final : public MainQueue {
public:
  void async(Task task) override { tasks.push_back(std::move(task)); }
  void after(Seconds /*delay*/, Task /*task*/) override {}
  std::unique_ptr<Timer> repeat(Seconds /*interval*/, Seconds /*tolerance*/,
                                Task /*task*/) override {
    return nullptr;
  }
  void runAll() {
    for (const Task& task : std::exchange(tasks, {}))
      task();
  }

  std::vector<Task> tasks;
};

class DelayedTasksTest : public testing::Test {
protected:
  /// Lets time pass, fires the alarm if it is due then, and runs what was handed over.
  void advance(nanoseconds distance) {
    alarm_.move(distance);
    if (alarm_.next && *alarm_.next <= alarm_.now())
      fire();
  }

  void fire() {
    alarm_.next.reset();
    delayed_.fire();
    queue_.runAll();
  }

  void after(nanoseconds delay, const std::string& name) {
    delayed_.after(delay, [this, name] { order_.push_back(name); });
  }

  std::unique_ptr<Timer> every(nanoseconds interval, nanoseconds tolerance,
                               const std::string& name) {
    return delayed_.repeat(interval, tolerance, [this, name] { order_.push_back(name); });
  }

  /// How long until the alarm is to fire.
  std::optional<nanoseconds> wait() const {
    return alarm_.next ? std::optional(*alarm_.next - alarm_.now()) : std::nullopt;
  }

  VirtualAlarm alarm_;
  PlainQueue queue_;
  DelayedTasks delayed_{queue_, alarm_};
  std::vector<std::string> order_;
};

TEST_F(DelayedTasksTest, alarmWaitsForEarliestTask) {
  EXPECT_EQ(wait(), std::nullopt);
  after(milliseconds(30), "c");
  EXPECT_EQ(wait(), milliseconds(30));
  after(milliseconds(10), "a");
  EXPECT_EQ(wait(), milliseconds(10));
  after(milliseconds(20), "b");
  EXPECT_EQ(wait(), milliseconds(10));
  EXPECT_EQ(alarm_.armed, 2);
  EXPECT_EQ(alarm_.window, nanoseconds(0));
}

TEST_F(DelayedTasksTest, tasksRunInOrderOfDueTimes) {
  after(milliseconds(30), "c");
  after(milliseconds(10), "a");
  after(milliseconds(20), "b");
  advance(milliseconds(10));
  EXPECT_THAT(order_, ElementsAre("a"));
  EXPECT_EQ(wait(), milliseconds(10));
  advance(milliseconds(25));
  EXPECT_THAT(order_, ElementsAre("a", "b", "c"));
  EXPECT_EQ(wait(), std::nullopt);
}

TEST_F(DelayedTasksTest, equalDueTimesRunInOrderOfAdding) {
  std::vector<std::string> names;
  for (char name = 'a'; name <= 'z'; ++name) {
    names.emplace_back(1, name);
    after(milliseconds(5), names.back());
  }
  advance(milliseconds(5));
  EXPECT_EQ(order_, names);
}

TEST_F(DelayedTasksTest, tasksOfDifferentDelaysAreMergedByDueTime) {
  std::mt19937 random(1);
  std::vector<std::pair<nanoseconds, std::string>> expected;
  nanoseconds passed{};
  for (int number = 0; number < 1000; ++number) {
    const nanoseconds delay = milliseconds(100) + nanoseconds(random() % 5);
    after(delay, std::to_string(number));
    expected.emplace_back(passed + delay, std::to_string(number));
    const nanoseconds pause(random() % 3);
    advance(pause);
    passed += pause;
  }
  std::ranges::stable_sort(expected, {}, [](const auto& task) { return task.first; });
  while (alarm_.next)
    advance(*wait());
  ASSERT_EQ(order_.size(), expected.size());
  for (std::size_t turn = 0; turn < order_.size(); ++turn)
    EXPECT_EQ(order_[turn], expected[turn].second);
}

TEST_F(DelayedTasksTest, dueTasksWaitForTheirTurnOnQueue) {
  after(milliseconds(0), "a");
  delayed_.fire();
  EXPECT_TRUE(order_.empty());
  queue_.runAll();
  EXPECT_THAT(order_, ElementsAre("a"));
}

TEST_F(DelayedTasksTest, earlyFiringArmsAgain) {
  after(milliseconds(10), "a");
  alarm_.move(milliseconds(10) - nanoseconds(1));
  fire();
  EXPECT_TRUE(order_.empty());
  EXPECT_EQ(wait(), nanoseconds(1));
  advance(nanoseconds(1));
  EXPECT_THAT(order_, ElementsAre("a"));
}

TEST_F(DelayedTasksTest, unusualDelaysAreNoneOrLong) {
  delayed_.after(Seconds(-1), [this] { order_.emplace_back("negative"); });
  delayed_.after(Seconds(std::numeric_limits<double>::quiet_NaN()),
                 [this] { order_.emplace_back("no number"); });
  delayed_.after(Seconds(std::numeric_limits<double>::infinity()),
                 [this] { order_.emplace_back("for ever"); });
  fire();
  EXPECT_THAT(order_, ElementsAre("negative", "no number"));
  EXPECT_GT(wait(), hours(200'000));
}

TEST_F(DelayedTasksTest, repetitionKeepsItsPaceAndTolerance) {
  const auto timer = every(hours(24), hours(1), "check");
  EXPECT_EQ(wait(), hours(24));
  EXPECT_EQ(alarm_.window, hours(1));
  advance(hours(24) + milliseconds(500));
  EXPECT_THAT(order_, ElementsAre("check"));
  EXPECT_EQ(wait(), hours(24) - milliseconds(500));
  EXPECT_EQ(alarm_.window, hours(1));
}

TEST_F(DelayedTasksTest, repetitionWaitsForTaskWithinItsTolerance) {
  const auto timer = every(hours(24), hours(1), "check");
  after(hours(24) + milliseconds(5), "poll");
  EXPECT_EQ(wait(), hours(24) + milliseconds(5));
  EXPECT_EQ(alarm_.window, nanoseconds(0));
  advance(hours(24) + milliseconds(5));
  EXPECT_THAT(order_, ElementsAre("poll", "check"));
  EXPECT_EQ(wait(), hours(24) - milliseconds(5));
}

TEST_F(DelayedTasksTest, repetitionIsNeverLaterThanItsTolerance) {
  const auto timer = every(hours(24), hours(1), "check");
  after(hours(26), "poll");
  EXPECT_EQ(wait(), hours(24));
  EXPECT_EQ(alarm_.window, hours(1));
}

TEST_F(DelayedTasksTest, lateRepetitionSkipsMissedTurns) {
  const auto timer = every(milliseconds(10), milliseconds(0), "turn");
  advance(milliseconds(35));
  EXPECT_THAT(order_, ElementsAre("turn"));
  EXPECT_EQ(wait(), milliseconds(5));
}

TEST_F(DelayedTasksTest, destroyedTimerLeavesNoWakeup) {
  auto first = every(milliseconds(10), milliseconds(0), "first");
  auto second = every(milliseconds(20), milliseconds(0), "second");
  first.reset();
  EXPECT_EQ(wait(), milliseconds(20));
  second.reset();
  EXPECT_EQ(wait(), std::nullopt);
}

TEST_F(DelayedTasksTest, timerDestroyedBeforeItsTurnOnQueueDoesNotRun) {
  auto timer = every(milliseconds(10), milliseconds(0), "turn");
  alarm_.move(milliseconds(10));
  delayed_.fire();
  timer.reset();
  queue_.runAll();
  EXPECT_TRUE(order_.empty());
  EXPECT_EQ(wait(), std::nullopt);
}

TEST_F(DelayedTasksTest, clearingDropsTasksAndDisarms) {
  const auto token = std::make_shared<int>(0);
  delayed_.after(milliseconds(5), [token] {});
  const auto timer = delayed_.repeat(milliseconds(5), Seconds(0), [] {});
  delayed_.clear();
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(wait(), std::nullopt);
}

/// Uses the list when it is destroyed, as an owner of a timer may do.
class Owner {
public:
  explicit Owner(DelayedTasks& tasks)
      : tasks_(tasks), timer_(tasks.repeat(milliseconds(5), Seconds(0), [] {})) {}
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() {
    tasks_.after(milliseconds(5), [] {});
    timer_.reset();
  }

private:
  DelayedTasks& tasks_;
  std::unique_ptr<Timer> timer_;
};

TEST_F(DelayedTasksTest, droppedTasksMayUseList) {
  delayed_.after(milliseconds(1), [owner = std::make_shared<Owner>(delayed_)] {});
  delayed_.clear();
  EXPECT_EQ(wait(), std::nullopt);
}

} // namespace
} // namespace driftmark::test
