#include "support/WaitingTasks.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// An event loop that does nothing but run tasks, and counts what wakes it up.
class WaitingTasksTest : public testing::Test {
protected:
  void runTurn() {
    answered_ = wakeups_;
    WaitingTasks::Turn turn(tasks_);
    while (const WaitingTasks::Task task = turn.next())
      task();
  }

  /// Runs turns as long as the loop is woken up.
  void runLoop() {
    while (wakeups_ > answered_)
      runTurn();
  }

  /// A task that adds its name to the order.
  WaitingTasks::Task named(const std::string& name) {
    return [this, name] { order_ += name; };
  }

  int wakeups_ = 0;
  int answered_ = 0;
  int cancelled_ = 0;
  std::string order_;
  WaitingTasks tasks_{[this] { ++wakeups_; },
                      [this] {
                        answered_ = wakeups_;
                        ++cancelled_;
                      }};
};

TEST_F(WaitingTasksTest, onlyFirstTaskWakesLoopUp) {
  tasks_.append(named("a"));
  tasks_.append(named("b"));
  tasks_.append(named("c"));
  EXPECT_EQ(wakeups_, 1);
  runLoop();
  tasks_.append(named("d"));
  EXPECT_GT(wakeups_, answered_);
}

TEST_F(WaitingTasksTest, turnRunsTasksThatWaitInOrder) {
  tasks_.append(named("a"));
  tasks_.append(named("b"));
  tasks_.append(named("c"));
  runTurn();
  EXPECT_EQ(order_, "abc");
}

TEST_F(WaitingTasksTest, taskAppendedInTurnWaitsForNext) {
  tasks_.append([this] {
    order_ += "a";
    tasks_.append(named("c"));
  });
  tasks_.append(named("b"));
  runTurn();
  EXPECT_EQ(order_, "ab");
  EXPECT_GT(wakeups_, answered_);
  runTurn();
  EXPECT_EQ(order_, "abc");
}

TEST_F(WaitingTasksTest, loopSleepsAfterTurnThatLeavesNothing) {
  tasks_.append(named("a"));
  tasks_.append(named("b"));
  runTurn();
  EXPECT_EQ(answered_, wakeups_);
  EXPECT_EQ(cancelled_, 1);
  tasks_.append(named("c"));
  runTurn();
  EXPECT_EQ(answered_, wakeups_);
  EXPECT_EQ(cancelled_, 1);
}

TEST_F(WaitingTasksTest, loopThatCannotCancelStartsOneEmptyTurn) {
  int wakeups = 0;
  WaitingTasks tasks([&] { ++wakeups; });
  const auto runTurn = [&] {
    int ran = 0;
    WaitingTasks::Turn turn(tasks);
    for (; turn.next(); ++ran) {
    }
    return ran;
  };
  tasks.append([] {});
  tasks.append([] {});
  tasks.append([] {});
  EXPECT_EQ(runTurn(), 3);
  EXPECT_EQ(wakeups, 2);
  tasks.append([] {});
  EXPECT_EQ(wakeups, 2);
  EXPECT_EQ(runTurn(), 1);
  EXPECT_EQ(runTurn(), 0);
  EXPECT_EQ(wakeups, 2);
  tasks.append([] {});
  EXPECT_EQ(wakeups, 3);
}

TEST_F(WaitingTasksTest, loopInsideTaskRunsTasksBehindIt) {
  tasks_.append([this] {
    order_ += "(";
    runLoop();
    order_ += ")";
  });
  tasks_.append([this] {
    order_ += "a";
    tasks_.append(named("c"));
  });
  tasks_.append(named("b"));
  runTurn();
  EXPECT_EQ(order_, "(abc)");
}

TEST_F(WaitingTasksTest, outerTurnEndsAfterLoopInsideItsTask) {
  tasks_.append([this] {
    runTurn();
    tasks_.append(named("b"));
    tasks_.append(named("c"));
  });
  tasks_.append(named("a"));
  runTurn();
  EXPECT_EQ(order_, "a");
  runLoop();
  EXPECT_EQ(order_, "abc");
}

TEST_F(WaitingTasksTest, closingDropsWaitingAndLaterTasks) {
  const auto token = std::make_shared<int>(0);
  tasks_.append([token] {});
  tasks_.close();
  EXPECT_EQ(token.use_count(), 1);
  tasks_.append([token] {});
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_EQ(wakeups_, 1);
  EXPECT_FALSE(WaitingTasks::Turn(tasks_).next());
}

TEST_F(WaitingTasksTest, droppedTaskMayAppendAnother) {
  struct Returning {
    explicit Returning(WaitingTasks& queue) : tasks(queue) {}
    Returning(const Returning&) = delete;
    Returning& operator=(const Returning&) = delete;
    ~Returning() {
      tasks.append([] {});
    }
    WaitingTasks& tasks;
  };
  tasks_.append([held = std::make_shared<Returning>(tasks_)] {});
  tasks_.close();
  EXPECT_FALSE(WaitingTasks::Turn(tasks_).next());
}

/// A loop that sleeps until it is woken up never misses a task.
TEST(WaitingTasksThreads, noTaskIsForgotten) {
  constexpr int tasksPerThread = 2000;
  std::atomic<int> wakeups = 0;
  WaitingTasks tasks([&] { ++wakeups; });
  int ran = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread)
    threads.emplace_back([&] {
      for (int task = 0; task < tasksPerThread; ++task)
        tasks.append([&ran] { ++ran; });
    });
  while (ran < 3 * tasksPerThread) {
    if (wakeups == 0) {
      std::this_thread::yield();
      continue;
    }
    --wakeups;
    WaitingTasks::Turn turn(tasks);
    while (const WaitingTasks::Task task = turn.next())
      task();
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(ran, 3 * tasksPerThread);
}

} // namespace
} // namespace driftmark::test
