#pragma once

#include "ports/MainQueue.h"

#include <memory>
#include <utility>

namespace driftmark::test {

/// A main queue whose delays all last longer, as those of a program that the system slows down.
/// Tasks without a delay are in time.
class LateTimers final : public MainQueue {
public:
  LateTimers(MainQueue& queue, Seconds lateness) : queue_(queue), lateness_(lateness) {}

  void async(Task task) override { queue_.async(std::move(task)); }
  void after(Seconds delay, Task task) override {
    queue_.after(delay + lateness_, std::move(task));
  }
  std::unique_ptr<Timer> repeat(Seconds interval, Seconds tolerance, Task task) override {
    return queue_.repeat(interval + lateness_, tolerance, std::move(task));
  }

private:
  MainQueue& queue_;
  const Seconds lateness_;
};

} // namespace driftmark::test
