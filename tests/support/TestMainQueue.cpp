#include "support/TestMainQueue.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace driftmark::test {

namespace {

// Far more than any test needs. Without these limits, a task that hands itself over again at once
// would keep a test running forever.
constexpr std::size_t maxTasksInOneCall = 100'000;
constexpr int maxRoundsOfClear = 1000;

Date::duration ticks(Seconds seconds) {
  return std::chrono::round<Date::duration>(seconds);
}

} // namespace

struct TestMainQueue::Core {
  struct Repetition {
    TimerSettings settings;
    Task task;
  };

  /// One turn of a timer, or a one-shot task.
  struct Entry {
    Task task;
    std::uint64_t timer = 0; ///< 0 for a one-shot task
  };

  using Key = std::pair<Date::duration, std::uint64_t>; ///< due time, order of adding

  mutable std::mutex mutex;
  Date::duration elapsed{};
  std::uint64_t lastOrder = 0;
  std::map<Key, Entry> entries;
  std::map<std::uint64_t, std::shared_ptr<Repetition>> timers;
  bool running = false;

  void add(Date::duration delay, Entry entry) {
    entries.emplace(Key(elapsed + delay, ++lastOrder), std::move(entry));
  }
};

class TestMainQueue::RunningTimer final : public Timer {
public:
  RunningTimer(std::weak_ptr<Core> core, std::uint64_t identifier)
      : core_(std::move(core)), identifier_(identifier) {}
  RunningTimer(const RunningTimer&) = delete;
  RunningTimer& operator=(const RunningTimer&) = delete;

  ~RunningTimer() override {
    const auto core = core_.lock();
    if (!core)
      return;
    std::shared_ptr<Core::Repetition> released;
    const std::lock_guard lock(core->mutex);
    const auto found = core->timers.find(identifier_);
    if (found != core->timers.end()) {
      released = std::move(found->second);
      core->timers.erase(found);
    }
    std::erase_if(core->entries,
                  [this](const auto& entry) { return entry.second.timer == identifier_; });
  }

private:
  std::weak_ptr<Core> core_;
  std::uint64_t identifier_;
};

TestMainQueue::TestMainQueue(TestClock& clock) : clock_(clock), core_(std::make_shared<Core>()) {}

TestMainQueue::~TestMainQueue() {
  clear();
}

void TestMainQueue::clear() {
  // A dropped task may own an object that owns a timer, or add another task.
  for (int round = 0; round < maxRoundsOfClear; ++round) {
    std::map<Core::Key, Core::Entry> dropped;
    {
      const std::lock_guard lock(core_->mutex);
      dropped.swap(core_->entries);
    }
    if (dropped.empty())
      return;
  }
  ADD_FAILURE() << "dropping the tasks of the main queue hands over new ones without end";
}

void TestMainQueue::async(Task task) {
  {
    const std::lock_guard lock(core_->mutex);
    core_->add({}, {.task = std::move(task)});
  }
  if (onAsync_)
    onAsync_();
}

void TestMainQueue::after(Seconds delay, Task task) {
  const std::lock_guard lock(core_->mutex);
  core_->add(ticks(delay), {.task = std::move(task)});
}

std::unique_ptr<Timer> TestMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  const std::lock_guard lock(core_->mutex);
  const std::uint64_t identifier = core_->lastOrder + 1;
  core_->timers.emplace(identifier, std::make_shared<Core::Repetition>(Core::Repetition{
                                        .settings = {.interval = interval, .tolerance = tolerance},
                                        .task = std::move(task)}));
  core_->add(ticks(interval), {.task = {}, .timer = identifier});
  return std::make_unique<RunningTimer>(core_, identifier);
}

std::size_t TestMainQueue::runAll() {
  return runUpTo(core_->elapsed);
}

std::size_t TestMainQueue::advance(Seconds distance) {
  return runUpTo(core_->elapsed + ticks(distance));
}

bool TestMainQueue::advanceToNext() {
  std::optional<Date::duration> next;
  {
    const std::lock_guard lock(core_->mutex);
    if (!core_->entries.empty())
      next = core_->entries.begin()->first.first;
  }
  return next && runUpTo(std::max(*next, core_->elapsed)) > 0;
}

void TestMainQueue::runModal(const std::function<void()>& inside) {
  const bool wasRunning = std::exchange(core_->running, false);
  inside();
  core_->running = wasRunning;
}

std::size_t TestMainQueue::runUpTo(Date::duration target) {
  if (std::exchange(core_->running, true))
    throw std::logic_error("the main queue was run from inside one of its tasks");
  std::size_t count = 0;
  for (;;) {
    Task task;
    {
      const std::lock_guard lock(core_->mutex);
      const auto first = core_->entries.begin();
      if (first == core_->entries.end() || first->first.first > target)
        break;
      const Date::duration due = first->first.first;
      if (due > core_->elapsed) {
        clock_.move(due - core_->elapsed);
        core_->elapsed = due;
      }
      Core::Entry entry = std::move(first->second);
      core_->entries.erase(first);
      if (entry.timer == 0) {
        task = std::move(entry.task);
      } else {
        const std::shared_ptr<Core::Repetition> repetition = core_->timers.at(entry.timer);
        core_->add(ticks(repetition->settings.interval), {.task = {}, .timer = entry.timer});
        task = [repetition] { repetition->task(); };
      }
    }
    if (count == maxTasksInOneCall) {
      core_->running = false;
      throw std::runtime_error("the main queue has run " + std::to_string(count) +
                               " tasks in one call and more are due: a task is added again "
                               "and again");
    }
    task();
    ++count;
  }
  const std::lock_guard lock(core_->mutex);
  if (target > core_->elapsed) {
    clock_.move(target - core_->elapsed);
    core_->elapsed = target;
  }
  core_->running = false;
  return count;
}

std::vector<Seconds> TestMainQueue::waiting() const {
  const std::lock_guard lock(core_->mutex);
  std::vector<Seconds> delays;
  for (const auto& [key, entry] : core_->entries)
    if (entry.timer == 0)
      delays.emplace_back(key.first - core_->elapsed);
  return delays;
}

std::vector<TestMainQueue::TimerSettings> TestMainQueue::timers() const {
  const std::lock_guard lock(core_->mutex);
  std::vector<TimerSettings> settings;
  for (const auto& [identifier, repetition] : core_->timers)
    settings.push_back(repetition->settings);
  return settings;
}

} // namespace driftmark::test
