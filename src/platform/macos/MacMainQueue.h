#pragma once

#include "ports/MainQueue.h"
#include "support/DelayedTasks.h"
#include "support/WaitingTasks.h"

#import <Foundation/Foundation.h>

namespace driftmark {

/// The main queue on the run loop of the main thread, in all its common modes: tasks also run while
/// a menu or something modal is open. `WaitingTasks` decides which tasks run in one turn of the
/// loop, `DelayedTasks` when a delayed task is due. Delays do not include the time that the machine
/// sleeps.
class MacMainQueue final : public MainQueue {
public:
  MacMainQueue();
  ~MacMainQueue() override;

  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;

private:
  /// One timer of the run loop, on the clock that stands still while the machine sleeps.
  class RunLoopAlarm final : public DelayedTasks::Alarm {
  public:
    explicit RunLoopAlarm(MacMainQueue& queue) : queue_(queue) {}
    RunLoopAlarm(const RunLoopAlarm&) = delete;
    ~RunLoopAlarm() override { disarm(); }

    DelayedTasks::Time now() const override;
    void arm(DelayedTasks::Time due, DelayedTasks::Duration tolerance) override;
    void disarm() override;

  private:
    MacMainQueue& queue_;
    NSTimer* timer_ = nil; ///< nil unless armed
  };

  void runTurn();

  CFRunLoopSourceRef source_;
  WaitingTasks tasks_;
  RunLoopAlarm alarm_{*this};
  DelayedTasks delayed_{*this, alarm_};
};

} // namespace driftmark
