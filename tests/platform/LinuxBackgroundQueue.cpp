#include "platform/linux/runloop/LinuxBackgroundQueue.h"

#include "harness/Waiting.h"
#include "harness/qt/EventLoop.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using Task = BackgroundQueue::Task;

/// Adds a task, which the queue must accept.
void add(LinuxBackgroundQueue& queue, QualityOfService quality, Task task) {
  EXPECT_FALSE(queue.async(quality, std::move(task)));
}

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
      add(queue, QualityOfService::utility, [&] {
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
      add(queue, QualityOfService::utility, note('u'));
    add(queue, QualityOfService::userInitiated, note('U'));
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
  add(*raw, QualityOfService::utility, [&] {
    started = true;
    while (!over)
      std::this_thread::yield();
    add(*raw, QualityOfService::utility, [&] { ++inner; });
  });
  EXPECT_TRUE(pollUntil([&] { return started.load(); }));
  std::thread release([&] { over = true; });
  queue.reset();
  release.join();
  EXPECT_LE(inner, 1);
}

/// Sets how many processes and threads the user of this process can have.
bool limitProcesses(rlim_t count, rlim_t most) {
  const rlimit limit{count, most};
  return setrlimit(RLIMIT_NPROC, &limit) == 0;
}

/// Whether a queue whose first thread is refused drops that task, and runs the next one.
bool recoversFromMissingThread() {
  constexpr unsigned userWithoutProcesses = 600'000'001;
  rlimit before{};
  if (getrlimit(RLIMIT_NPROC, &before) != 0)
    return false;
  if (geteuid() == 0 && setresuid(userWithoutProcesses, userWithoutProcesses, userWithoutProcesses))
    return false;
  LinuxBackgroundQueue queue;
  std::atomic<bool> firstRan = false;
  if (!limitProcesses(1, before.rlim_max))
    return false;
  const auto error = queue.async(QualityOfService::utility, [&] { firstRan = true; });
  if (!error || error->description != "Resource temporarily unavailable")
    return false;
  if (!limitProcesses(before.rlim_max, before.rlim_max))
    return false;
  std::promise<void> secondRan;
  return !queue.async(QualityOfService::utility, [&] { secondRan.set_value(); }) &&
         secondRan.get_future().wait_for(maxWait) == std::future_status::ready && !firstRan;
}

/// Root's threads are not limited, so a child process gives up its rights.
TEST(LinuxBackgroundQueue, taskWithoutThreadIsRefusedAndNextOneTriesAgain) {
  const pid_t child = fork();
  if (child == 0)
    _exit(recoversFromMissingThread() ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

} // namespace
} // namespace driftmark::test
