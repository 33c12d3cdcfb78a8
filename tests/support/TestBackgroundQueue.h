#pragma once

#include "ports/BackgroundQueue.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace driftmark::test {

/// Background work under the test's control.
class TestBackgroundQueue final : public BackgroundQueue {
public:
  enum class Mode {
    wait,   ///< tasks wait until `runAll` or `runNext`
    atOnce, ///< a task runs inside the call that hands it over
    thread, ///< every task gets a thread of its own, joined by `join` or the destructor
  };

  TestBackgroundQueue() = default;
  TestBackgroundQueue(const TestBackgroundQueue&) = delete;
  TestBackgroundQueue& operator=(const TestBackgroundQueue&) = delete;
  ~TestBackgroundQueue() override;

  /// How tasks that are handed over from now on run.
  void setMode(Mode mode);

  void async(QualityOfService quality, Task task) override;

  /// Runs the oldest waiting task on the calling thread; false when none waits.
  bool runNext();

  /// Runs waiting tasks until none is left. Returns how many ran.
  std::size_t runAll();

  /// Waits for all threads of `Mode::thread`.
  void join();

  /// Drops everything that waits.
  void clear();

  /// How many tasks wait.
  std::size_t waiting() const;

  /// The quality that each task was handed over with, oldest first.
  std::vector<QualityOfService> qualities() const;

private:
  mutable std::mutex mutex_;
  Mode mode_ = Mode::wait;
  std::deque<Task> tasks_;
  std::vector<std::thread> threads_;
  std::vector<QualityOfService> qualities_;
};

} // namespace driftmark::test
