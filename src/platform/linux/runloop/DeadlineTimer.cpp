#include "platform/linux/runloop/DeadlineTimer.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace driftmark {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds longestWait{std::numeric_limits<int>::max()};

/// How far a coarse timer may be off, in either direction.
milliseconds coarseness(milliseconds wait) {
  return std::min(wait / 20 + milliseconds(1), milliseconds(1000));
}

} // namespace

void DeadlineTimer::arm(Clock::time_point due, Clock::duration tolerance) {
  due_ = due;
  tolerance_ = tolerance;
  wait();
}

void DeadlineTimer::wait() {
  const auto remaining = std::chrono::ceil<milliseconds>(due_ - Clock::now());
  const milliseconds wait = std::max(remaining, milliseconds(0));
  const milliseconds slack = coarseness(wait);
  const bool coarse = wait > milliseconds(0) && tolerance_ >= 2 * slack;
  const milliseconds span = std::min(coarse ? wait + slack : wait, longestWait);
  timer_.start(static_cast<int>(span.count()), coarse ? Qt::CoarseTimer : Qt::PreciseTimer, this);
}

void DeadlineTimer::timerEvent(QTimerEvent* /*event*/) {
  if (Clock::now() < due_) {
    wait();
    return;
  }
  timer_.stop();
  onDue_();
}

} // namespace driftmark
