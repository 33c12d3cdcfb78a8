#pragma once

#include "platform/posix/Threads.h"
#include "ports/MainQueue.h"
#include "support/WaitingTasks.h"

#include <list>
#include <memory>

#include <QSocketNotifier>

namespace driftmark {

/// The main queue on the Qt event loop of the thread that constructs it. Delays use the monotonic
/// clock, with a precision of a millisecond. Delayed and repeated tasks join the other waiting
/// tasks when they are due. A repetition whose task is late skips the turns that it missed.
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
  class DeadlineTimer;
  class Repetition;
  class RepeatingTimer;

  /// A task whose delay has not passed yet.
  struct DelayedTask {
    Task task;
    std::unique_ptr<DeadlineTimer> timer;
  };

  void runTurn();
  void runDelayed(std::list<DelayedTask>::iterator delayed);

  Wakeup wakeup_;
  QSocketNotifier notifier_;
  WaitingTasks tasks_;
  std::list<DelayedTask> delayed_;
};

} // namespace driftmark
