#include "platform/linux/runloop/LinuxMainQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace driftmark {

namespace {

using SteadyClock = DeadlineTimer::Clock;

/// Some thirty years: longer than this program runs, and safe to add to any moment.
constexpr Seconds longestDelay{1e9};

/// The duration in the clock's ticks, rounded up. What is negative, or no number, is none.
SteadyClock::duration ticks(Seconds duration) {
  if (!(duration > Seconds::zero()))
    return {};
  return std::chrono::ceil<SteadyClock::duration>(std::min(duration, longestDelay));
}

} // namespace

/// The state of a repeating timer, kept alive by its timer and while its task runs.
class LinuxMainQueue::Repetition : public std::enable_shared_from_this<Repetition> {
public:
  Repetition(TaskQueue& tasks, Seconds interval, Seconds tolerance, Task task)
      : tasks_(tasks), interval_(std::max<SteadyClock::duration>(ticks(interval), shortest)),
        tolerance_(ticks(tolerance)), task_(std::move(task)), due_(SteadyClock::now() + interval_),
        timer_([this] { postTurn(); }) {
    timer_.arm(due_, tolerance_);
  }

private:
  static constexpr std::chrono::milliseconds shortest{1};

  void postTurn() {
    tasks_.post([weak = weak_from_this()] {
      if (const auto self = weak.lock())
        self->runTurn();
    });
  }

  void runTurn() {
    due_ += interval_ * ((SteadyClock::now() - due_) / interval_ + 1);
    timer_.arm(due_, tolerance_);
    task_();
  }

  TaskQueue& tasks_;
  const SteadyClock::duration interval_;
  const SteadyClock::duration tolerance_;
  const Task task_;
  SteadyClock::time_point due_;
  DeadlineTimer timer_;
};

class LinuxMainQueue::RepeatingTimer final : public Timer {
public:
  explicit RepeatingTimer(std::shared_ptr<Repetition> repetition)
      : repetition_(std::move(repetition)) {}

private:
  const std::shared_ptr<Repetition> repetition_;
};

LinuxMainQueue::~LinuxMainQueue() {
  tasks_.close();
  // What a task holds may come back to this queue while it goes.
  while (!delayed_.empty())
    std::list<DelayedTask>(std::move(delayed_)).clear();
}

void LinuxMainQueue::async(Task task) {
  tasks_.post(std::move(task));
}

void LinuxMainQueue::after(Seconds delay, Task task) {
  const auto delayed = delayed_.insert(delayed_.end(), {std::move(task), nullptr});
  delayed->timer = std::make_unique<DeadlineTimer>(
      [this, delayed] { tasks_.post([this, delayed] { runDelayed(delayed); }); });
  delayed->timer->arm(SteadyClock::now() + ticks(delay));
}

void LinuxMainQueue::runDelayed(std::list<DelayedTask>::iterator delayed) {
  const Task task = std::move(delayed->task);
  delayed_.erase(delayed);
  task();
}

std::unique_ptr<Timer> LinuxMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  return std::make_unique<RepeatingTimer>(
      std::make_shared<Repetition>(tasks_, interval, tolerance, std::move(task)));
}

} // namespace driftmark
