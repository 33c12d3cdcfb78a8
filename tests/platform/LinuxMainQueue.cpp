// What the main queue on Qt's event loop promises beyond the contract of its port.

#include "platform/linux/runloop/LinuxMainQueue.h"

#include "harness/qt/EventLoop.h"

#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QTimer>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// Counts the events of a type: `SockAct` for each wake-up by a descriptor, `Timer` by a timer.
class EventCounter final : public QObject {
public:
  explicit EventCounter(QEvent::Type type) : type_(type) {
    QCoreApplication::instance()->installEventFilter(this);
  }

  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    count_ += event->type() == type_ ? 1 : 0;
    return false;
  }
  int count() const { return count_; }

private:
  const QEvent::Type type_;
  int count_ = 0;
};

TEST(LinuxMainQueue, manyTasksTakeOneWakeup) {
  LinuxMainQueue queue;
  const EventCounter counter(QEvent::SockAct);
  int ran = 0;
  for (int task = 0; task < 10'000; ++task)
    queue.async([&] { ++ran; });
  ASSERT_TRUE(runUntil([&] { return ran == 10'000; }));
  EXPECT_EQ(counter.count(), 1);
}

TEST(LinuxMainQueue, tasksFromManyThreadsAllRun) {
  LinuxMainQueue queue;
  int ran = 0;
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int thread = 0; thread < 4; ++thread)
    threads.emplace_back([&] {
      for (int task = 0; task < 5'000; ++task)
        queue.async([&] { ++ran; });
    });
  EXPECT_TRUE(runUntil([&] { return ran == 20'000; }));
  for (std::thread& thread : threads)
    thread.join();
}

/// Runs an event loop of its own until `done`.
void runInside(const std::function<bool()>& done) {
  EXPECT_TRUE(runUntil(done));
}

TEST(LinuxMainQueue, eventLoopInsideTaskRunsTasksBehindItInOrder) {
  LinuxMainQueue queue;
  std::string order;
  queue.async([&] {
    order += "1 ";
    queue.async([&] { order += "4 "; });
    runInside([&] { return order.ends_with("5 "); });
    order += "end ";
  });
  queue.async([&] {
    order += "2 ";
    queue.async([&] { order += "5 "; });
  });
  queue.async([&] { order += "3 "; });
  ASSERT_TRUE(runUntil([&] { return order.ends_with("end "); }));
  EXPECT_EQ(order, "1 2 3 4 5 end ");
}

TEST(LinuxMainQueue, eventLoopInsideLastTaskRunsNewOnes) {
  LinuxMainQueue queue;
  bool ran = false;
  bool over = false;
  std::thread other;
  queue.async([&] {
    other = std::thread([&] { queue.async([&] { ran = true; }); });
    runInside([&] { return ran; });
    over = true;
  });
  EXPECT_TRUE(runUntil([&] { return over; }));
  other.join();
}

TEST(LinuxMainQueue, nestedEventLoopsKeepOrder) {
  LinuxMainQueue queue;
  std::string order;
  for (const char* const name : {"a", "b", "c"})
    queue.async([&order, name] {
      order += name;
      runInside([&] { return order.find('!') != std::string::npos; });
      order += name;
    });
  queue.async([&] { order += "!"; });
  EXPECT_TRUE(runUntil([&] { return order.size() == 7; }));
  EXPECT_EQ(order, "abc!cba");
}

TEST(LinuxMainQueue, loopSleepsWhenAllTasksHaveRun) {
  LinuxMainQueue queue;
  bool ran = false;
  queue.async([&] { runFor(Seconds(0)); });
  queue.async([&] { ran = true; });
  ASSERT_TRUE(runUntil([&] { return ran; }));
  const EventCounter counter(QEvent::SockAct);
  runFor(Seconds(0.02));
  EXPECT_EQ(counter.count(), 0);
}

TEST(LinuxMainQueue, taskThatAppendsItselfForeverStarvesNothing) {
  LinuxMainQueue queue;
  bool over = false;
  long rounds = 0;
  const std::function<void()> again = [&] {
    ++rounds;
    if (!over)
      queue.async(again);
  };
  again();
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] { ++ticks; });
  timer.start(std::chrono::milliseconds(1));
  bool delayed = false;
  queue.after(Seconds(0.01), [&] { delayed = true; });
  EXPECT_TRUE(runUntil([&] { return delayed && ticks >= 5; }));
  EXPECT_GT(rounds, 5);
  over = true;
}

TEST(LinuxMainQueue, manyDelayedTasksAreNeverEarly) {
  LinuxMainQueue queue;
  int ran = 0;
  int early = 0;
  constexpr int count = 300;
  for (int number = 0; number < count; ++number) {
    const Seconds delay(number * 0.000137);
    const auto start = SteadyClock::now();
    queue.after(delay, [&, start, delay] {
      ++ran;
      early += SteadyClock::now() - start < delay ? 1 : 0;
    });
  }
  EXPECT_TRUE(runUntil([&] { return ran == count; }));
  EXPECT_EQ(early, 0);
}

TEST(LinuxMainQueue, delayedTasksShareOneTimer) {
  LinuxMainQueue queue;
  const EventCounter counter(QEvent::Timer);
  int ran = 0;
  for (int task = 0; task < 1000; ++task)
    queue.after(Seconds(0), [&] { ++ran; });
  ASSERT_TRUE(runUntil([&] { return ran == 1000; }));
  EXPECT_EQ(counter.count(), 1);
}

TEST(LinuxMainQueue, emptyQueueHasNoTimer) {
  LinuxMainQueue queue;
  auto timer = queue.repeat(Seconds(0.001), Seconds(0), [] {});
  timer.reset();
  const EventCounter counter(QEvent::Timer);
  const auto end = SteadyClock::now() + std::chrono::milliseconds(5);
  while (SteadyClock::now() < end)
    QCoreApplication::processEvents();
  EXPECT_EQ(counter.count(), 0);
}

TEST(LinuxMainQueue, timersWithToleranceAreNeverEarlyAndKeepPace) {
  LinuxMainQueue queue;
  constexpr Seconds interval{0.05};
  const auto start = SteadyClock::now();
  std::vector<Seconds> moments;
  const auto timer =
      queue.repeat(interval, interval, [&] { moments.emplace_back(SteadyClock::now() - start); });
  ASSERT_TRUE(runUntil([&] { return moments.size() >= 6; }));
  for (std::size_t turn = 0; turn < moments.size(); ++turn)
    EXPECT_GE(moments[turn].count(), interval.count() * static_cast<double>(turn + 1));
}

TEST(LinuxMainQueue, missedTurnsAreSkipped) {
  LinuxMainQueue queue;
  int turns = 0;
  const auto timer = queue.repeat(Seconds(0.01), Seconds(0), [&] {
    if (++turns == 1) {
      const auto end = SteadyClock::now() + std::chrono::milliseconds(55);
      while (SteadyClock::now() < end) {
      }
    }
  });
  const auto start = SteadyClock::now();
  ASSERT_TRUE(runUntil([&] { return turns == 2; }));
  EXPECT_GE(SteadyClock::now() - start, std::chrono::milliseconds(65));
}

TEST(LinuxMainQueue, delaysBeyondTimerRangeAreNotEarly) {
  LinuxMainQueue queue;
  bool ran = false;
  for (const double delay : {3e6, 1e9, 1e300, std::numeric_limits<double>::infinity()})
    queue.after(Seconds(delay), [&] { ran = true; });
  const auto timer = queue.repeat(Seconds(1e12), Seconds(1e12), [&] { ran = true; });
  runFor(Seconds(0.02));
  EXPECT_FALSE(ran);
}

TEST(LinuxMainQueue, negativeAndInvalidDelaysRunSoon) {
  LinuxMainQueue queue;
  int ran = 0;
  for (const double delay : {0.0, -5.0, std::numeric_limits<double>::quiet_NaN()})
    queue.after(Seconds(delay), [&] { ++ran; });
  EXPECT_TRUE(runUntil([&] { return ran == 3; }));
}

/// Uses the queue when it is destroyed, as an owner of timers and tasks may do.
class Holder {
public:
  explicit Holder(LinuxMainQueue& queue)
      : queue_(queue), timer_(queue.repeat(Seconds(1), Seconds(0), [] {})) {}
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() {
    queue_.async([] {});
    queue_.after(Seconds(0), [] {});
    timer_.reset();
  }

private:
  LinuxMainQueue& queue_;
  std::unique_ptr<Timer> timer_;
};

TEST(LinuxMainQueue, droppedTasksMayUseQueue) {
  auto queue = std::make_unique<LinuxMainQueue>();
  queue->async([holder = std::make_shared<Holder>(*queue)] {});
  queue->after(Seconds(1), [holder = std::make_shared<Holder>(*queue)] {});
  queue.reset();
}

} // namespace
} // namespace driftmark::test
