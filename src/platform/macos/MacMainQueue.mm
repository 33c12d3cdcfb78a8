// How tasks run on the main thread, at once, delayed and repeatedly.

#include "platform/macos/Bridge.h"
#include "platform/macos/MacAdapters.h"
#include "support/Weakly.h"

#include <utility>

namespace driftmark {

namespace {

void start(NSTimer* timer) {
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
}

/// Passes its task to the queue repeatedly while it exists.
class RepeatingTimer final : public Timer {
public:
  RepeatingTimer(MainQueue& queue, Seconds interval, Seconds tolerance, MainQueue::Task task)
      : task_(std::make_shared<const MainQueue::Task>(std::move(task))) {
    MainQueue* const mainQueue = &queue;
    const auto turn = weakly(task_, [](const MainQueue::Task& action) { action(); });
    timer_ = [NSTimer timerWithTimeInterval:interval.count()
                                    repeats:YES
                                      block:^(NSTimer*) {
                                        mainQueue->async(turn);
                                      }];
    timer_.tolerance = tolerance.count();
    start(timer_);
  }
  RepeatingTimer(const RepeatingTimer&) = delete;
  ~RepeatingTimer() override { [timer_ invalidate]; }

private:
  const std::shared_ptr<const MainQueue::Task> task_;
  NSTimer* timer_ = nil;
};

} // namespace

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
  // Releasing a delayed task may call this queue.
  while (delayed_.count > 0) {
    @autoreleasepool {
      NSTimer* const timer = [delayed_ anyObject];
      [delayed_ removeObject:timer];
      [timer invalidate];
    }
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
  NSTimer* const timer = [NSTimer timerWithTimeInterval:delay.count()
                                                repeats:NO
                                                  block:^(NSTimer* fired) {
                                                    [delayed_ removeObject:fired];
                                                    async(task);
                                                  }];
  [delayed_ addObject:timer];
  start(timer);
}

std::unique_ptr<Timer> MacMainQueue::repeat(Seconds interval, Seconds tolerance, Task task) {
  return std::make_unique<RepeatingTimer>(*this, interval, tolerance, std::move(task));
}

} // namespace driftmark
