// How tasks run on the main thread, at once, delayed and repeatedly.

#include "platform/macos/MacMainQueue.h"

#include "platform/macos/Bridge.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace driftmark {

DelayedTasks::Time MacMainQueue::RunLoopAlarm::now() const {
  return DelayedTasks::Time(clock_gettime_nsec_np(CLOCK_UPTIME_RAW));
}

/// A timer that has fired, or was replaced, is never used again.
void MacMainQueue::RunLoopAlarm::arm(DelayedTasks::Time due, DelayedTasks::Duration tolerance) {
  disarm();
  DelayedTasks* const delayed = &queue_.delayed_;
  timer_ = [NSTimer timerWithTimeInterval:std::max(Seconds(due - now()), Seconds(0)).count()
                                  repeats:NO
                                    block:^(NSTimer*) {
                                      noThrow([delayed] { delayed->fire(); });
                                    }];
  timer_.tolerance = Seconds(tolerance).count();
  [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
}

void MacMainQueue::RunLoopAlarm::disarm() {
  [timer_ invalidate];
  timer_ = nil;
}

MacMainQueue::MacMainQueue()
    : tasks_([this] {
        CFRunLoopSourceSignal(source_);
        CFRunLoopWakeUp(CFRunLoopGetMain());
      }) {
  CFRunLoopSourceContext context{};
  context.info = this;
  context.perform = [](void* queue) { static_cast<MacMainQueue*>(queue)->runTurn(); };
  source_ = CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context);
  CFRunLoopAddSource(CFRunLoopGetMain(), source_, kCFRunLoopCommonModes);
}

MacMainQueue::~MacMainQueue() {
  tasks_.close();
  CFRunLoopSourceInvalidate(source_);
  CFRelease(source_);
  @autoreleasepool {
    delayed_.clear();
  }
}

void MacMainQueue::async(Task task) {
  tasks_.append(std::move(task));
}

void MacMainQueue::runTurn() {
  WaitingTasks::Turn turn(tasks_);
  for (bool over = false; !over;) {
    @autoreleasepool {
      const Task task = turn.next();
      if (task)
        noThrow(task);
      over = !task;
    }
  }
}

void MacMainQueue::after(Seconds delay, Task task) {
  delayed_.after(delay, std::move(task));
}

std::unique_ptr<Timer> MacMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  return delayed_.repeat(interval, tolerance, std::move(task));
}

} // namespace driftmark
