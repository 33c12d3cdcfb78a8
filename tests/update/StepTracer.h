#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include <sys/types.h>

namespace driftmark::test {

/// Follows the main thread of a process and stops it right before each system call that renames an
/// item or starts a process: the steps of an install. In a stop `onStep` decides about the step
/// with that number, counted from 1.
class StepTracer {
public:
  enum class Verdict { goOn, kill };
  using Decision = std::function<Verdict(int step)>;

  /// Follows from now on. `onStep` is called on a thread of this object.
  StepTracer(pid_t process, Decision onStep);
  ~StepTracer();
  StepTracer(const StepTracer&) = delete;
  StepTracer& operator=(const StepTracer&) = delete;

  /// Waits until the process has ended, by itself or by `onStep`. Its status is left to its parent.
  void awaitEnd();

  /// Whether the system lets one process follow another.
  bool isFollowing() const { return isFollowing_; }

private:
  void follow(std::promise<bool> begun);
  bool seize() const;
  void takeSteps();
  void resume(int signal) const;

  pid_t process_;
  Decision onStep_;
  bool isFollowing_ = false;
  std::atomic<bool> hasEnded_ = false;
  std::thread thread_;
};

} // namespace driftmark::test
