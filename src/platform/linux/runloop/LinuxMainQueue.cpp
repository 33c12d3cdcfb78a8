// How tasks, delays and repetitions run on the Qt event loop.

#include "platform/linux/runloop/LinuxMainQueue.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <utility>

#include <QBasicTimer>
#include <QObject>

namespace driftmark {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds maxWait{std::numeric_limits<int>::max()};

/// How far a coarse timer may be off, in either direction.
milliseconds coarseness(milliseconds wait) {
  return std::min(wait / 20 + milliseconds(1), milliseconds(1000));
}

} // namespace

/// One timer of the event loop, on the steady clock. With enough tolerance it is a coarse one,
/// which the system groups with others.
class LinuxMainQueue::QtAlarm final : public QObject, public DelayedTasks::Alarm {
public:
  explicit QtAlarm(std::function<void()> onFire) : onFire_(std::move(onFire)) {}

  DelayedTasks::Time now() const override {
    return std::chrono::steady_clock::now().time_since_epoch();
  }
  void arm(DelayedTasks::Time due, DelayedTasks::Duration tolerance) override;
  void disarm() override { timer_.stop(); }

protected:
  void timerEvent(QTimerEvent* /*event*/) override {
    timer_.stop();
    onFire_();
  }

private:
  const std::function<void()> onFire_;
  QBasicTimer timer_;
};

void LinuxMainQueue::QtAlarm::arm(DelayedTasks::Time due, DelayedTasks::Duration tolerance) {
  const auto wait = std::max(std::chrono::ceil<milliseconds>(due - now()), milliseconds(0));
  const milliseconds slack = coarseness(wait);
  const bool coarse = wait > milliseconds(0) && tolerance >= 2 * slack;
  const milliseconds span = std::min(coarse ? wait + slack : wait, maxWait);
  timer_.start(static_cast<int>(span.count()), coarse ? Qt::CoarseTimer : Qt::PreciseTimer, this);
}

LinuxMainQueue::LinuxMainQueue()
    : notifier_(wakeup_.descriptor(), QSocketNotifier::Read),
      tasks_([this] { wakeup_.wake(); }, [this] { wakeup_.clear(); }),
      alarm_(std::make_unique<QtAlarm>([this] { delayed_.fire(); })), delayed_(*this, *alarm_) {
  QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { runTurn(); });
}

LinuxMainQueue::~LinuxMainQueue() {
  tasks_.close();
  delayed_.clear();
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
  delayed_.after(delay, std::move(task));
}

std::unique_ptr<Timer> LinuxMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  return delayed_.repeat(interval, tolerance, std::move(task));
}

} // namespace driftmark
