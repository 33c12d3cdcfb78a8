#include "support/contracts/BackgroundQueueContract.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BackgroundQueueContract);

void BackgroundQueueContract::async(QualityOfService quality, BackgroundQueue::Task task) {
  EXPECT_FALSE(subject_->queue().async(quality, std::move(task)));
}

TEST_P(BackgroundQueueContract, everyTaskRunsOnce) {
  std::mutex mutex;
  std::multiset<int> ran;
  for (int task = 0; task < 100; ++task)
    async(task % 2 == 0 ? QualityOfService::utility : QualityOfService::userInitiated, [&, task] {
      const std::lock_guard lock(mutex);
      ran.insert(task);
    });
  ASSERT_TRUE(waitUntil([&] {
    const std::lock_guard lock(mutex);
    return ran.size() >= 100;
  }));
  const std::lock_guard lock(mutex);
  EXPECT_EQ(ran.size(), 100U);
  for (int task = 0; task < 100; ++task)
    EXPECT_EQ(ran.count(task), 1U) << task;
}

TEST_P(BackgroundQueueContract, tasksMayBeAddedByTasksAndOtherThreads) {
  std::atomic<int> ran = 0;
  std::thread other([&] {
    async(QualityOfService::utility,
          [&] { async(QualityOfService::userInitiated, [&] { ++ran; }); });
  });
  other.join();
  EXPECT_TRUE(waitUntil([&] { return ran == 1; }));
}

TEST_P(BackgroundQueueContract, blockedTaskDoesNotDelayNext) {
  // The tasks own it: they may still be returning when the test is over.
  struct Meeting {
    std::mutex mutex;
    std::condition_variable changed;
    bool secondRan = false;
    std::atomic<bool> firstDone = false;
  };
  const auto meeting = std::make_shared<Meeting>();
  async(QualityOfService::utility, [meeting] {
    std::unique_lock lock(meeting->mutex);
    meeting->firstDone = meeting->changed.wait_for(lock, std::chrono::seconds(10),
                                                   [&] { return meeting->secondRan; });
  });
  async(QualityOfService::utility, [meeting] {
    const std::lock_guard lock(meeting->mutex);
    meeting->secondRan = true;
    meeting->changed.notify_all();
  });
  EXPECT_TRUE(waitUntil([&] { return meeting->firstDone.load(); }))
      << "the second task did not run while the first waited for it";
}

TEST_P(BackgroundQueueContract, destructionWaitsForRunningTasksAndDropsOthers) {
  const auto token = std::make_shared<int>(0);
  std::atomic<int> started = 0;
  std::atomic<int> finished = 0;
  for (int task = 0; task < 200; ++task)
    async(QualityOfService::utility, [&, token] {
      ++started;
      std::this_thread::yield();
      ++finished;
    });
  subject_->destroy();
  EXPECT_EQ(started, finished);
  EXPECT_EQ(token.use_count(), 1);
}

TEST_P(BackgroundQueueContract, taskIsReleasedAfterItHasRun) {
  const auto token = std::make_shared<int>(0);
  std::atomic<bool> ran = false;
  async(QualityOfService::utility, [token, &ran] { ran = true; });
  EXPECT_TRUE(waitUntil([&] { return ran && token.use_count() == 1; }));
}

} // namespace driftmark::test
