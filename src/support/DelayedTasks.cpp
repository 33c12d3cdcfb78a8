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
  ~Repetition() { tasks_.remove(group()); }

  void wait() {
    tasks_.add(group(), due_, tolerance_,
               weakly(shared_from_this(), std::mem_fn(&Repetition::run)));
  }

private:
  static constexpr std::chrono::milliseconds minInterval{1};

  void run() {
    due_ += interval_ * ((tasks_.alarm_.now() - due_) / interval_ + 1);
    wait();
    task_();
  }

  GroupName group() const { return {interval_, this}; }

  DelayedTasks& tasks_;
  const Duration interval_;
  const Duration tolerance_;
  const Task task_;
  Time due_;
};

class DelayedTasks::RepeatingTimer final : public Timer {
public:
  explicit RepeatingTimer(std::shared_ptr<Repetition> repetition)
      : repetition_(std::move(repetition)) {}

private:
  const std::shared_ptr<Repetition> repetition_;
};

void DelayedTasks::after(Seconds delay, Task task) {
  const Duration wait = ticks(delay);
  add({wait, nullptr}, alarm_.now() + wait, {}, std::move(task));
}

std::unique_ptr<Timer> DelayedTasks::repeat(Seconds interval, Seconds tolerance, Task task) {
  auto repetition = std::make_shared<Repetition>(*this, interval, tolerance, std::move(task));
  repetition->wait();
  return std::make_unique<RepeatingTimer>(std::move(repetition));
}

void DelayedTasks::fire() {
  const Time now = alarm_.now();
  while (!firsts_.empty() && firsts_.begin()->second->second.front().due <= now)
    queue_.async(takeFirst());
  arm();
}

void DelayedTasks::clear() {
  while (!groups_.empty()) {
    firsts_.clear();
    std::exchange(groups_, {}).clear();
  }
  arm();
}

void DelayedTasks::add(const GroupName& name, Time due, Duration tolerance, Task task) {
  const auto group = groups_.try_emplace(name).first;
  const Key key(due + tolerance, ++lastOrder_);
  group->second.push_back({key, due, std::move(task)});
  if (group->second.size() > 1)
    return;
  const auto first = firsts_.emplace(key, group).first;
  if (first == firsts_.begin())
    arm();
}

void DelayedTasks::remove(const GroupName& name) {
  const auto group = groups_.find(name);
  if (group == groups_.end())
    return;
  const auto first = firsts_.find(group->second.front().key);
  const bool wasNext = first == firsts_.begin();
  firsts_.erase(first);
  const auto removed = groups_.extract(group);
  if (wasNext)
    arm();
}

DelayedTasks::Task DelayedTasks::takeFirst() {
  auto first = firsts_.extract(firsts_.begin());
  Group& group = first.mapped()->second;
  Task task = std::move(group.front().task);
  group.pop_front();
  if (group.empty()) {
    groups_.erase(first.mapped());
  } else {
    first.key() = group.front().key;
    firsts_.insert(std::move(first));
  }
  return task;
}

/// Any moment between the due time and the deadline of the first task is in time for the others.
void DelayedTasks::arm() {
  if (firsts_.empty()) {
    alarm_.disarm();
    return;
  }
  const Entry& next = firsts_.begin()->second->second.front();
  alarm_.arm(next.due, next.key.first - next.due);
}

} // namespace driftmark
