#pragma once

#include <chrono>
#include <functional>

#include <QBasicTimer>
#include <QObject>

namespace driftmark {

/// Calls back once a moment of the steady clock has come, never before. Lives on one thread, whose
/// Qt event loop it needs.
class DeadlineTimer final : public QObject {
public:
  using Clock = std::chrono::steady_clock;

  explicit DeadlineTimer(std::function<void()> onDue) : onDue_(std::move(onDue)) {}

  /// Waits for `due`; where `tolerance` leaves room for it, the system may group this wake-up with
  /// others that come a little later.
  void arm(Clock::time_point due, Clock::duration tolerance = {});

protected:
  void timerEvent(QTimerEvent* event) override;

private:
  void wait();

  const std::function<void()> onDue_;
  Clock::time_point due_;
  Clock::duration tolerance_{};
  QBasicTimer timer_;
};

} // namespace driftmark
