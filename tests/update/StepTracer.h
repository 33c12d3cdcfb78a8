#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include <sys/types.h>

namespace driftmark::test {

/// Traces the main thread of a process and stops it right before each system call that renames an
/// item or starts a process: the steps of an install. At each stop `onStep` decides what happens;
/// its argument is the number of the step, counted from 1.
class StepTracer {
public:
  enum class Verdict { proceed, kill };
  using Decision = std::function<Verdict(int step)>;

  /// Traces from now on. `onStep` is called on a thread of this object.
  StepTracer(pid_t process, Decision onStep);
  ~StepTracer();
  StepTracer(const StepTracer&) = delete;
  StepTracer& operator=(const StepTracer&) = delete;

  /// Waits until the process has ended or `onStep` has killed it. Its parent still has to reap it.
  void awaitEnd();

  /// Whether the system lets one process trace another.
  bool isTracing() const { return isTracing_; }

private:
  void trace(std::promise<bool> started);
  bool seize() const;
  void takeSteps();
  void resume(int signal) const;

  pid_t process_;
  Decision onStep_;
  bool isTracing_ = false;
  std::atomic<bool> hasEnded_ = false;
  std::thread thread_;
};

} // namespace driftmark::test
