#pragma once

#include "ports/MainQueue.h"
#include "support/WaitingTasks.h"

#import <Foundation/Foundation.h>

namespace driftmark {

/// The main queue on the run loop of the main thread, in all its common modes: tasks also run while
/// a menu or something modal is open. `WaitingTasks` decides which tasks run in one turn of the
/// loop. Delays do not include the time that the machine sleeps. A late repetition skips the times
/// that it missed.
class MacMainQueue final : public MainQueue {
public:
  MacMainQueue();
  ~MacMainQueue() override;

  void async(Task task) override;
  void after(Seconds delay, Task task) override;
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override;

private:
  void runTurn();

  CFRunLoopSourceRef source_;
  NSMutableSet<NSTimer*>* const delayed_ = [[NSMutableSet alloc] init]; ///< main thread only
  WaitingTasks tasks_;
};

} // namespace driftmark
