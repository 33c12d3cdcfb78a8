#include "support/TestPlatform.h"

#include <chrono>
#include <thread>

namespace driftmark::test {

TestPlatform::~TestPlatform() {
  childProcesses.releaseAll();
  backgroundQueue.join();
  // Waiting tasks may own what owns parts of the other ports.
  backgroundQueue.clear();
  mainQueue.clear();
}

bool TestPlatform::runUntil(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  for (;;) {
    settle();
    if (done())
      return true;
    if (std::chrono::steady_clock::now() > deadline)
      return false;
    if (!mainQueue.advanceToNext())
      std::this_thread::yield();
  }
}

} // namespace driftmark::test
