#include "support/WaitingTasks.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(WaitingTasksTest, onlyTheFirstTaskWakesTheRunnerUp) {
  WaitingTasks tasks;
  EXPECT_TRUE(tasks.append([] {}));
  EXPECT_FALSE(tasks.append([] {}));
  EXPECT_TRUE(tasks.take().othersWait);
  EXPECT_FALSE(tasks.append([] {}));
  EXPECT_TRUE(tasks.take().othersWait);
  EXPECT_FALSE(tasks.take().othersWait);
  EXPECT_FALSE(tasks.take().task);
  EXPECT_TRUE(tasks.append([] {}));
}

TEST(WaitingTasksTest, tasksComeInTheirOrder) {
  WaitingTasks tasks;
  std::string order;
  tasks.append([&] { order += "a"; });
  tasks.append([&] { order += "b"; });
  tasks.take().task();
  tasks.append([&] { order += "c"; });
  tasks.take().task();
  tasks.take().task();
  EXPECT_EQ(order, "abc");
}

TEST(WaitingTasksTest, closingDropsWhatWaitsAndWhatComes) {
  WaitingTasks tasks;
  const auto token = std::make_shared<int>(0);
  tasks.append([token] {});
  tasks.close();
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_FALSE(tasks.append([token] {}));
  EXPECT_EQ(token.use_count(), 1);
  EXPECT_FALSE(tasks.take().task);
}

TEST(WaitingTasksTest, droppedTaskMayComeBack) {
  struct Returning {
    explicit Returning(WaitingTasks& queue) : tasks(queue) {}
    ~Returning() {
      tasks.append([] {});
    }
    WaitingTasks& tasks;
  };
  WaitingTasks tasks;
  tasks.append([held = std::make_shared<Returning>(tasks)] {});
  tasks.close();
  EXPECT_FALSE(tasks.take().task);
}

/// A runner that sleeps unless it was woken up, or others wait, never misses a task.
TEST(WaitingTasksTest, noTaskIsForgottenBetweenThreads) {
  constexpr int tasksPerThread = 2000;
  WaitingTasks tasks;
  std::atomic<int> wakeups = 0;
  int ran = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread)
    threads.emplace_back([&] {
      for (int task = 0; task < tasksPerThread; ++task)
        if (tasks.append([&ran] { ++ran; }))
          ++wakeups;
    });
  while (ran < 3 * tasksPerThread) {
    if (wakeups == 0) {
      std::this_thread::yield();
      continue;
    }
    --wakeups;
    for (auto next = tasks.take(); next.task;
         next = next.othersWait ? tasks.take() : WaitingTasks::Next())
      next.task();
  }
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(ran, 3 * tasksPerThread);
}

} // namespace
} // namespace driftmark::test
