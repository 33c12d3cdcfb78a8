// Which delayed task is next, and for when the platform's timer is armed.

#include "support/DelayedTasks.h"

#include "support/Weakly.h"

#include <algorithm>
#include <functional>

namespace driftmark {

namespace {

using Duration = DelayedTasks::Duration;

/// About thirty years: longer than this program runs, and safe to add to any moment.
constexpr Seconds maxDelay{1e9};

/// The duration in the clock's ticks, rounded up. Zero for a negative number and for NaN.
Duration ticks(Seconds duration) {
  if (!(duration > Seconds::zero()))
    return {};
  return std::chrono::ceil<Duration>(std::min(duration, maxDelay));
}

} // namespace

/// The state of a repeating timer, kept alive by its Timer and while its task runs.
class DelayedTasks::Repetition : public std::enable_shared_from_this<Repetition> {
public:
  Repetition(DelayedTasks& tasks, Seconds interval, Seconds tolerance, Task task)
      : tasks_(tasks), interval_(std::max<Duration>(ticks(interval), minInterval)),
        tolerance_(ticks(tolerance)), task_(std::move(task)), due_(tasks.alarm_.now() + interval_) {
  }
  Repetition(const Repetition&) = delete;
  Repetition& operator=(const Repetition&) = delete;
  ~Repetition() { tasks_.remove(key_); }

  void wait() {
    key_ = tasks_.add(due_, tolerance_, weakly(shared_from_this(), std::mem_fn(&Repetition::run)));
  }

private:
  static constexpr std::chrono::milliseconds minInterval{1};

  void run() {
    due_ += interval_ * ((tasks_.alarm_.now() - due_) / interval_ + 1);
    wait();
    task_();
  }

  DelayedTasks& tasks_;
  const Duration interval_;
  const Duration tolerance_;
  const Task task_;
  Time due_;
  Key key_; ///< of the next turn
};

class DelayedTasks::RepeatingTimer final : public Timer {
public:
  explicit RepeatingTimer(std::shared_ptr<Repetition> repetition)
      : repetition_(std::move(repetition)) {}

private:
  const std::shared_ptr<Repetition> repetition_;
};

void DelayedTasks::after(Seconds delay, Task task) {
  add(alarm_.now() + ticks(delay), {}, std::move(task));
}

std::unique_ptr<Timer> DelayedTasks::repeat(Seconds interval, Seconds tolerance, Task task) {
  auto repetition = std::make_shared<Repetition>(*this, interval, tolerance, std::move(task));
  repetition->wait();
  return std::make_unique<RepeatingTimer>(std::move(repetition));
}

void DelayedTasks::fire() {
  const Time now = alarm_.now();
  while (!entries_.empty() && entries_.begin()->second.due <= now)
    queue_.async(std::move(entries_.extract(entries_.begin()).mapped().task));
  arm();
}

void DelayedTasks::clear() {
  while (!entries_.empty())
    std::exchange(entries_, {}).clear();
  arm();
}

/// Most tasks have the same delay as the one before, so the new one is most likely the last.
DelayedTasks::Key DelayedTasks::add(Time due, Duration tolerance, Task task) {
  const Key key(due + tolerance, ++lastOrder_);
  const auto added = entries_.emplace_hint(entries_.end(), key, Entry{due, std::move(task)});
  if (added == entries_.begin())
    arm();
  return key;
}

void DelayedTasks::remove(const Key& key) {
  const auto found = entries_.find(key);
  if (found == entries_.end())
    return;
  const bool wasNext = found == entries_.begin();
  const auto removed = entries_.extract(found);
  if (wasNext)
    arm();
}

/// Any moment between the due time and the deadline of the first task is in time for the others.
void DelayedTasks::arm() {
  if (entries_.empty()) {
    alarm_.disarm();
    return;
  }
  const auto& [key, entry] = *entries_.begin();
  alarm_.arm(entry.due, key.first - entry.due);
}

} // namespace driftmark
