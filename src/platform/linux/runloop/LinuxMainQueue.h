#pragma once

#include "platform/posix/Threads.h"
#include "ports/MainQueue.h"
#include "support/DelayedTasks.h"
#include "support/WaitingTasks.h"

#include <memory>

#include <QSocketNotifier>

namespace driftmark {

/// The main queue on the Qt event loop of the thread that constructs it. `WaitingTasks` decides
/// which tasks run in one turn of the loop, `DelayedTasks` when a delayed task is due. Delays use
/// the monotonic clock, with a precision of a millisecond.
class LinuxMainQueue final : public MainQueue {
public:
  /// Throws std::system_error when the system has no descriptors left.
  LinuxMainQueue();
  LinuxMainQueue(const LinuxMainQueue&) = delete;
  LinuxMainQueue& operator=(const LinuxMainQueue&) = delete;
  ~LinuxMainQueue() override;

  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;

private:
  class QtAlarm;

  void runTurn();

  Wakeup wakeup_;
  QSocketNotifier notifier_;
  WaitingTasks tasks_;
  const std::unique_ptr<QtAlarm> alarm_;
  DelayedTasks delayed_;
};

} // namespace driftmark
