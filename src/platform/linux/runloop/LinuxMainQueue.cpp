// How tasks, delays and repetitions run on the Qt event loop.

#include "platform/linux/runloop/LinuxMainQueue.h"

#include "support/Weakly.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>

#include <QBasicTimer>
#include <QObject>

namespace driftmark {

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// About thirty years: longer than this program runs, and safe to add to any moment.
constexpr Seconds maxDelay{1e9};

/// The duration in the clock's ticks, rounded up. Zero for a negative number and for NaN.
SteadyClock::duration ticks(Seconds duration) {
  if (!(duration > Seconds::zero()))
    return {};
  return std::chrono::ceil<SteadyClock::duration>(std::min(duration, maxDelay));
}

constexpr milliseconds maxWait{std::numeric_limits<int>::max()};

/// How far a coarse timer may be off, in either direction.
milliseconds coarseness(milliseconds wait) {
  return std::min(wait / 20 + milliseconds(1), milliseconds(1000));
}

} // namespace

/// Calls back at a moment of the steady clock or soon after it, never before it.
class LinuxMainQueue::DeadlineTimer final : public QObject {
public:
  explicit DeadlineTimer(std::function<void()> onDue) : onDue_(std::move(onDue)) {}

  /// Waits for `due`. If `tolerance` is large enough, the system may delay this wake-up to group it
  /// with others.
  void arm(SteadyClock::time_point due, SteadyClock::duration tolerance = {});

protected:
  void timerEvent(QTimerEvent* event) override;

private:
  void wait();

  const std::function<void()> onDue_;
  SteadyClock::time_point due_;
  SteadyClock::duration tolerance_{};
  QBasicTimer timer_;
};

void LinuxMainQueue::DeadlineTimer::arm(SteadyClock::time_point due,
                                        SteadyClock::duration tolerance) {
  due_ = due;
  tolerance_ = tolerance;
  wait();
}

void LinuxMainQueue::DeadlineTimer::wait() {
  const auto remaining = std::chrono::ceil<milliseconds>(due_ - SteadyClock::now());
  const milliseconds wait = std::max(remaining, milliseconds(0));
  const milliseconds slack = coarseness(wait);
  const bool coarse = wait > milliseconds(0) && tolerance_ >= 2 * slack;
  const milliseconds span = std::min(coarse ? wait + slack : wait, maxWait);
  timer_.start(static_cast<int>(span.count()), coarse ? Qt::CoarseTimer : Qt::PreciseTimer, this);
}

void LinuxMainQueue::DeadlineTimer::timerEvent(QTimerEvent* /*event*/) {
  if (SteadyClock::now() < due_) {
    wait();
    return;
  }
  timer_.stop();
  onDue_();
}

/// The state of a repeating timer, kept alive by its Timer and while its task runs.
class LinuxMainQueue::Repetition : public std::enable_shared_from_this<Repetition> {
public:
  Repetition(MainQueue& queue, Seconds interval, Seconds tolerance, Task task)
      : queue_(queue), interval_(std::max<SteadyClock::duration>(ticks(interval), minInterval)),
        tolerance_(ticks(tolerance)), task_(std::move(task)), due_(SteadyClock::now() + interval_),
        timer_([this] { appendTurn(); }) {
    timer_.arm(due_, tolerance_);
  }

private:
  static constexpr milliseconds minInterval{1};

  void appendTurn() {
    queue_.async(weakly(shared_from_this(), [](Repetition& self) { self.runTurn(); }));
  }

  void runTurn() {
    due_ += interval_ * ((SteadyClock::now() - due_) / interval_ + 1);
    timer_.arm(due_, tolerance_);
    task_();
  }

  MainQueue& queue_;
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

LinuxMainQueue::LinuxMainQueue()
    : notifier_(wakeup_.descriptor(), QSocketNotifier::Read),
      tasks_([this] { wakeup_.wake(); }, [this] { wakeup_.clear(); }) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { runTurn(); });
}

LinuxMainQueue::~LinuxMainQueue() {
  tasks_.close();
  // Destroying what a task holds may use this queue.
  while (!delayed_.empty())
    std::list<DelayedTask>(std::move(delayed_)).clear();
}

void LinuxMainQueue::async(Task task) {
  tasks_.append(std::move(task));
}

void LinuxMainQueue::runTurn() {
  wakeup_.clear();
  WaitingTasks::Turn turn(tasks_);
  while (const Task task = turn.next())
    task();
}

void LinuxMainQueue::after(Seconds delay, Task task) {
  const auto delayed = delayed_.insert(delayed_.end(), {std::move(task), nullptr});
  delayed->timer = std::make_unique<DeadlineTimer>(
      [this, delayed] { async([this, delayed] { runDelayed(delayed); }); });
  delayed->timer->arm(SteadyClock::now() + ticks(delay));
}

void LinuxMainQueue::runDelayed(std::list<DelayedTask>::iterator delayed) {
  const Task task = std::move(delayed->task);
  delayed_.erase(delayed);
  task();
}

std::unique_ptr<Timer> LinuxMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  return std::make_unique<RepeatingTimer>(
      std::make_shared<Repetition>(*this, interval, tolerance, std::move(task)));
}

} // namespace driftmark
