#include "support/contracts/ClockContract.h"

#include <chrono>
#include <thread>

namespace driftmark::test {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ClockContract);

TEST_P(ClockContract, distantPastIsEarlierThanNow) {
  EXPECT_GT(clock().now(), distantPast);
}

TEST_P(ClockContract, timeIsOfThisCentury) {
  EXPECT_GT(clock().now(), Date(std::chrono::sys_days{std::chrono::year{2024} / 1 / 1}));
  EXPECT_LT(clock().now(), Date(std::chrono::sys_days{std::chrono::year{2200} / 1 / 1}));
}

TEST_P(ClockContract, clockMovesAsTimePasses) {
  const Date before = clock().now();
  subject_->pass(Seconds(0.05));
  const Seconds passed = clock().now() - before;
  // The wall clock may be slewed a little against the waiting.
  EXPECT_GT(passed.count(), 0.045);
  EXPECT_LT(passed.count(), 30.0);
}

TEST_P(ClockContract, clockResolvesFractionsOfSecond) {
  const Date before = clock().now();
  subject_->pass(Seconds(0.002));
  EXPECT_NE(clock().now(), before);
  EXPECT_LT(Seconds(clock().now() - before).count(), 30.0);
}

TEST_P(ClockContract, otherThreadsSeeSameTime) {
  const Date before = clock().now();
  Date there;
  std::thread other([&] { there = clock().now(); });
  other.join();
  EXPECT_GE(there, before);
  EXPECT_LE(there, clock().now());
}

} // namespace driftmark::test
