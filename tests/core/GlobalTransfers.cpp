#include "monitor/GlobalTransfers.h"

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

constexpr Seconds window{60};
constexpr std::int64_t mostBytes = std::numeric_limits<std::int64_t>::max();

Date at(double seconds) {
  return later(Date{}, Seconds(1'700'000'000 + seconds));
}

TEST(GlobalTransfers, sameSizeIsTheSameTransfer) {
  GlobalTransfers transfers(window);
  EXPECT_TRUE(transfers.report(100, at(0)));
  EXPECT_FALSE(transfers.report(100, at(1)));
  EXPECT_TRUE(transfers.report(200, at(1)));
  EXPECT_EQ(transfers.activity(at(1)), (GlobalActivity{2, 300}));
}

TEST(GlobalTransfers, transferLeavesTheWindowAtItsEnd) {
  GlobalTransfers transfers(window);
  transfers.report(100, at(0));
  EXPECT_TRUE(transfers.activity(at(59.75)));
  EXPECT_FALSE(transfers.activity(at(60)));
  EXPECT_FALSE(transfers.empty());
  transfers.prune(at(60));
  EXPECT_TRUE(transfers.empty());
}

TEST(GlobalTransfers, finishedTransferIsForgotten) {
  GlobalTransfers transfers(window);
  transfers.report(100, at(0));
  transfers.finish(200);
  EXPECT_EQ(transfers.activity(at(0)), (GlobalActivity{1, 100}));
  transfers.finish(100);
  EXPECT_EQ(transfers.activity(at(0)), std::nullopt);
}

TEST(GlobalTransfers, transferCountsAgainAfterTheClockWasSetBack) {
  GlobalTransfers transfers(window);
  transfers.report(100, at(0));
  EXPECT_FALSE(transfers.activity(at(100)));
  EXPECT_TRUE(transfers.activity(at(10)));
}

TEST(GlobalTransfers, sumOf64BitsIsTheMost) {
  GlobalTransfers transfers(window);
  transfers.report(mostBytes, at(0));
  EXPECT_EQ(transfers.activity(at(0)), (GlobalActivity{1, mostBytes}));
  transfers.report(1, at(30));
  transfers.report(mostBytes - 1, at(59));
  EXPECT_EQ(transfers.activity(at(60)), (GlobalActivity{2, mostBytes})) << "the first has left";
}

TEST(GlobalTransfersDeathTest, sumBeyond64BitsEndsTheProgramAtTheQuestion) {
  GlobalTransfers transfers(window);
  transfers.report(mostBytes, at(0));
  transfers.report(1, at(0));
  EXPECT_DEATH(transfers.activity(at(1)), "exceed 64 bits");
}

/// Random reports under a clock that jumps both ways, compared with a walk over all transfers.
TEST(GlobalTransfers, activityIsThatOfAWalk) {
  std::mt19937 random(3);
  GlobalTransfers transfers(window);
  std::map<std::int64_t, Date> expected;
  double clock = 0;
  for (int step = 0; step < 50'000; ++step) {
    static constexpr std::array<double, 6> jumps{0, 0.5, 1, 59, 61, -100};
    clock += jumps.at(random() % (random() % 20 == 0 ? 6 : 3));
    const Date now = at(clock);
    const auto total = static_cast<std::int64_t>(1 + random() % 50);
    switch (random() % 4) {
    case 0:
      transfers.finish(total);
      expected.erase(total);
      break;
    case 1:
      transfers.prune(now);
      std::erase_if(expected, [&](const auto& entry) { return now - entry.second >= window; });
      break;
    default:
      ASSERT_EQ(transfers.report(total, now), !expected.contains(total));
      expected[total] = now;
    }
    GlobalActivity walked;
    for (const auto& [size, date] : expected) {
      if (now - date >= window)
        continue;
      ++walked.count;
      walked.bytes += size;
    }
    const auto activity = transfers.activity(now);
    ASSERT_EQ(activity.value_or(GlobalActivity{}), walked) << step;
    ASSERT_EQ(transfers.empty(), expected.empty());
  }
}

} // namespace
} // namespace driftmark::test
