// How tests run the run loop: with a deadline.

#include "macos/RunLoop.h"

#include <chrono>

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

namespace driftmark::test {

namespace {

constexpr std::chrono::seconds maxWait{60};
constexpr NSTimeInterval pollInterval = 0.005;

} // namespace

bool runUntil(const std::function<bool()>& done, const char* file, int line) {
  const auto deadline = std::chrono::steady_clock::now() + maxWait;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE_AT(file, line) << "timed out waiting for this condition";
      return false;
    }
    @autoreleasepool {
      [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                          beforeDate:[NSDate dateWithTimeIntervalSinceNow:pollInterval]];
    }
  }
  return true;
}

void runFor(Seconds duration) {
  const auto end = std::chrono::steady_clock::now() + duration;
  runUntil([end] { return std::chrono::steady_clock::now() >= end; });
}

} // namespace driftmark::test
