#include "support/contracts/MainQueueContract.h"

#include <atomic>
#include <numeric>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MainQueueContract);

namespace {

constexpr Seconds shortWhile{0.02};

} // namespace

bool MainQueueContract::pass(Seconds duration) {
  const auto over = std::make_shared<bool>(false);
  queue().after(duration, [over] { *over = true; });
  return runUntil([over] { return *over; });
}

TEST_P(MainQueueContract, tasksRunInOrderOfAdding) {
  std::string order;
  for (char letter = 'a'; letter <= 'z'; ++letter)
    queue().async([&order, letter] { order += letter; });
  ASSERT_TRUE(runUntil([&] { return order.size() == 26; }));
  EXPECT_EQ(order, "abcdefghijklmnopqrstuvwxyz");
}

TEST_P(MainQueueContract, taskNeverRunsInsideCallThatAddsIt) {
  bool ran = false;
  queue().async([&] { ran = true; });
  EXPECT_FALSE(ran);
  ASSERT_TRUE(runUntil([&] { return ran; }));

  bool delayedRan = false;
  queue().after(Seconds(0), [&] { delayedRan = true; });
  EXPECT_FALSE(delayedRan);
  EXPECT_TRUE(runUntil([&] { return delayedRan; }));
}

TEST_P(MainQueueContract, taskAddedByTaskRunsAfterWaitingOnes) {
  std::string order;
  queue().async([&] {
    queue().async([&] { order += "nested"; });
    order += "first ";
  });
  queue().async([&] { order += "second "; });
  ASSERT_TRUE(runUntil([&] { return order.ends_with("nested"); }));
  EXPECT_EQ(order, "first second nested");
}

TEST_P(MainQueueContract, tasksFromOtherThreadsRunOnQueueThreadInOrder) {
  constexpr int threadCount = 4;
  constexpr int tasksPerThread = 250;
  std::vector<std::vector<int>> seen(threadCount);
  int onOtherThreads = 0;
  int total = 0;
  const std::thread::id here = std::this_thread::get_id();
  std::vector<std::thread> threads;
  threads.reserve(threadCount);
  for (int thread = 0; thread < threadCount; ++thread)
    threads.emplace_back([&, thread] {
      for (int task = 0; task < tasksPerThread; ++task)
        queue().async([&, thread, task] {
          seen[static_cast<std::size_t>(thread)].push_back(task);
          onOtherThreads += std::this_thread::get_id() != here;
          ++total;
        });
    });
  EXPECT_TRUE(runUntil([&] { return total == threadCount * tasksPerThread; }));
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(onOtherThreads, 0);
  std::vector<int> inOrder(tasksPerThread);
  std::iota(inOrder.begin(), inOrder.end(), 0);
  for (const std::vector<int>& tasks : seen)
    EXPECT_EQ(tasks, inOrder);
}

TEST_P(MainQueueContract, delayedTaskRunsOnceAfterItsDelay) {
  int runs = 0;
  const Seconds start = subject_->elapsed();
  std::optional<Seconds> ranAt;
  queue().after(shortWhile, [&] {
    ++runs;
    ranAt = subject_->elapsed();
  });
  ASSERT_TRUE(runUntil([&] { return runs > 0; }));
  EXPECT_GE((*ranAt - start).count(), shortWhile.count());
  ASSERT_TRUE(pass(shortWhile * 3));
  EXPECT_EQ(runs, 1);
}

TEST_P(MainQueueContract, shorterDelayRunsFirst) {
  std::string order;
  queue().after(shortWhile * 8, [&] { order += "long"; });
  queue().after(shortWhile, [&] { order += "short "; });
  ASSERT_TRUE(runUntil([&] { return order.ends_with("long"); }));
  EXPECT_EQ(order, "short long");
}

TEST_P(MainQueueContract, equalDelaysRunInOrderOfAdding) {
  std::string order;
  for (char letter = 'a'; letter <= 'z'; ++letter)
    queue().after(shortWhile, [&order, letter] { order += letter; });
  ASSERT_TRUE(runUntil([&] { return order.size() == 26; }));
  EXPECT_EQ(order, "abcdefghijklmnopqrstuvwxyz");
}

TEST_P(MainQueueContract, otherTasksRunDuringDelay) {
  std::string order;
  queue().after(shortWhile, [&] { order += "delayed"; });
  queue().async([&] { order += "soon "; });
  ASSERT_TRUE(runUntil([&] { return order.ends_with("delayed"); }));
  EXPECT_EQ(order, "soon delayed");
}

TEST_P(MainQueueContract, timerRepeatsAndIsNeverEarly) {
  const Seconds start = subject_->elapsed();
  std::vector<Seconds> moments;
  const auto timer =
      queue().repeat(shortWhile, Seconds(0), [&] { moments.push_back(subject_->elapsed()); });
  ASSERT_TRUE(runUntil([&] { return moments.size() >= 4; }));
  // The system may group wake-ups by a millisecond.
  for (std::size_t turn = 0; turn < moments.size(); ++turn)
    EXPECT_GE((moments[turn] - start).count(),
              shortWhile.count() * static_cast<double>(turn + 1) - 0.001);
}

TEST_P(MainQueueContract, timerWithToleranceRepeats) {
  int runs = 0;
  const auto timer = queue().repeat(shortWhile, shortWhile / 2, [&] { ++runs; });
  EXPECT_TRUE(runUntil([&] { return runs >= 3; }));
}

TEST_P(MainQueueContract, destroyedTimerStops) {
  int runs = 0;
  auto timer = queue().repeat(shortWhile, Seconds(0), [&] { ++runs; });
  ASSERT_TRUE(runUntil([&] { return runs == 2; }));
  timer.reset();
  ASSERT_TRUE(pass(shortWhile * 4));
  EXPECT_EQ(runs, 2);
}

TEST_P(MainQueueContract, timerDestroyedBeforeFirstRunNeverRuns) {
  int runs = 0;
  auto timer = queue().repeat(shortWhile, Seconds(0), [&] { ++runs; });
  timer.reset();
  ASSERT_TRUE(pass(shortWhile * 4));
  EXPECT_EQ(runs, 0);
}

TEST_P(MainQueueContract, timerMayBeDestroyedByItsOwnTask) {
  int runs = 0;
  const auto token = std::make_shared<int>(7);
  int tokenAfterwards = 0;
  std::unique_ptr<Timer> timer;
  timer = queue().repeat(shortWhile, Seconds(0), [&, token] {
    ++runs;
    timer.reset();
    tokenAfterwards = *token;
  });
  ASSERT_TRUE(runUntil([&] { return runs > 0; }));
  ASSERT_TRUE(pass(shortWhile * 4));
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(tokenAfterwards, 7);
}

TEST_P(MainQueueContract, timersAreIndependent) {
  int fast = 0;
  int slow = 0;
  auto fastTimer = queue().repeat(shortWhile, Seconds(0), [&] { ++fast; });
  const auto slowTimer = queue().repeat(shortWhile * 3, Seconds(0), [&] { ++slow; });
  ASSERT_TRUE(runUntil([&] { return slow == 1; }));
  EXPECT_GE(fast, 1);
  fastTimer.reset();
  const int fastBefore = fast;
  ASSERT_TRUE(runUntil([&] { return slow == 3; }));
  EXPECT_EQ(fast, fastBefore);
}

TEST_P(MainQueueContract, taskIsReleasedAfterItHasRun) {
  const auto token = std::make_shared<int>(0);
  queue().async([token] {});
  queue().after(shortWhile, [token] {});
  auto timer = queue().repeat(shortWhile, Seconds(0), [token] {});
  EXPECT_GT(token.use_count(), 1);
  ASSERT_TRUE(pass(shortWhile * 2));
  timer.reset();
  EXPECT_TRUE(runUntil([&] { return token.use_count() == 1; }));
}

TEST_P(MainQueueContract, waitingTasksAreDroppedWithQueue) {
  const auto token = std::make_shared<int>(0);
  bool ran = false;
  queue().async([token, &ran] { ran = true; });
  queue().after(shortWhile, [token, &ran] { ran = true; });
  EXPECT_EQ(token.use_count(), 3);
  subject_->destroy();
  EXPECT_FALSE(ran);
  EXPECT_EQ(token.use_count(), 1);
}

} // namespace driftmark::test
