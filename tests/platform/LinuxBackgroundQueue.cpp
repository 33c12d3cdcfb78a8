#include "platform/linux/runloop/LinuxBackgroundQueue.h"

#include "harness/qt/EventLoop.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

TEST(LinuxBackgroundQueue, waitingUserInitiatedTasksRunFirst) {
  std::mutex mutex;
  std::condition_variable changed;
  std::string order;
  int blocked = 0;
  bool released = false;
  {
    LinuxBackgroundQueue queue;
    // Keeps every thread busy until the other tasks wait.
    for (int task = 0; task < 16; ++task)
      queue.async(QualityOfService::utility, [&] {
        std::unique_lock lock(mutex);
        ++blocked;
        changed.notify_all();
        changed.wait(lock, [&] { return released; });
      });
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return blocked == 16; });
    const auto note = [&](char letter) {
      return [&, letter] {
        const std::lock_guard guard(mutex);
        order += letter;
        changed.notify_all();
      };
    };
    for (int task = 0; task < 40; ++task)
      queue.async(QualityOfService::utility, note('u'));
    queue.async(QualityOfService::userInitiated, note('U'));
    released = true;
    changed.notify_all();
    changed.wait(lock, [&] { return order.size() == 41; });
  }
  // Sixteen threads start tasks at the same time, so some may finish before the urgent one.
  EXPECT_LT(order.find('U'), 16U);
}

TEST(LinuxBackgroundQueue, tasksAddedDuringDestructionAreDropped) {
  auto queue = std::make_unique<LinuxBackgroundQueue>();
  LinuxBackgroundQueue* const raw = queue.get();
  std::atomic<bool> started = false;
  std::atomic<bool> over = false;
  std::atomic<int> inner = 0;
  raw->async(QualityOfService::utility, [&] {
    started = true;
    while (!over)
      std::this_thread::yield();
    raw->async(QualityOfService::utility, [&] { ++inner; });
  });
  EXPECT_TRUE(pollUntil([&] { return started.load(); }));
  std::thread release([&] { over = true; });
  queue.reset();
  release.join();
  EXPECT_LE(inner, 1);
}

} // namespace
} // namespace driftmark::test
