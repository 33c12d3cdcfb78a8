#include "support/TestPlatform.h"

#include <chrono>
#include <stdexcept>
#include <thread>

namespace driftmark::test {

TestPlatform::~TestPlatform() {
  childProcesses.releaseAll();
  backgroundQueue.join();
  // Waiting tasks may own objects that use the other ports.
  backgroundQueue.clear();
  mainQueue.clear();
}

void TestPlatform::settle() {
  constexpr int maxRounds = 10'000; // far more than any test needs
  for (int round = 0; round < maxRounds; ++round)
    if (backgroundQueue.runAll() + mainQueue.runAll() == 0)
      return;
  throw std::runtime_error("the background queue and the main queue keep handing each other tasks");
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
