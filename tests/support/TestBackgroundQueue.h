#pragma once

#include "ports/BackgroundQueue.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace driftmark::test {

/// Background work under the test's control.
class TestBackgroundQueue final : public BackgroundQueue {
public:
  enum class Mode {
    wait,   ///< tasks wait until `runAll` or `runNext`
    thread, ///< every task gets its own thread, joined by `join` or the destructor
  };

  TestBackgroundQueue() = default;
  TestBackgroundQueue(const TestBackgroundQueue&) = delete;
  TestBackgroundQueue& operator=(const TestBackgroundQueue&) = delete;
  ~TestBackgroundQueue() override;

  /// Sets how tasks run that are added from now on.
  void setMode(Mode mode);

  [[nodiscard]] std::optional<PlatformError> async(QualityOfService quality, Task task) override;

  /// Refuses tasks from now on, for lack of a thread, or accepts them again.
  void refuse(std::optional<PlatformError> error);

  /// Runs the oldest waiting task on the calling thread; false when none waits.
  bool runNext();

  /// Runs waiting tasks until none is left. Returns how many ran.
  std::size_t runAll();

  /// Waits for all threads of `Mode::thread`.
  void join();

  /// Drops all waiting tasks.
  void clear();

  /// The number of waiting tasks.
  std::size_t waiting() const;

  /// The quality of service of each added task, refused ones included, oldest first.
  std::vector<QualityOfService> qualities() const;

private:
  mutable std::mutex mutex_;
  Mode mode_ = Mode::wait;
  std::optional<PlatformError> refusal_;
  std::deque<Task> tasks_;
  std::vector<std::thread> threads_;
  std::vector<QualityOfService> qualities_;
};

} // namespace driftmark::test
