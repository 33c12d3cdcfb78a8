#include "core/MonitorTest.h"

#include <optional>
#include <string>

namespace driftmark::test {
namespace {

struct ThresholdCase {
  std::string name;
  std::optional<std::string> value;
  double seconds;

  friend std::ostream& operator<<(std::ostream& out, const ThresholdCase& threshold) {
    return out << threshold.name;
  }
};

class StallThresholdTest : public MonitorTest, public testing::WithParamInterface<ThresholdCase> {
protected:
  void startWithThreshold() {
    if (GetParam().value)
      platform.environment.set("DRIFTMARK_STALL_SECS", *GetParam().value);
    platform.fileSystem.pretendEverythingExists();
    start();
    item("/a.txt", " \u2191 1%");
  }
};

TEST_P(StallThresholdTest, transferStallsAfterTheThresholdAndNotAtIt) {
  startWithThreshold();
  const Date begun = now();
  advance(GetParam().seconds);
  ASSERT_EQ(now(), later(begun, Seconds(GetParam().seconds)));
  EXPECT_FALSE(monitor->isStalled(transfer("/a.txt")));
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  advance(0.001);
  EXPECT_TRUE(monitor->isStalled(transfer("/a.txt")));
  EXPECT_NEAR(monitor->longestStall().value(), GetParam().seconds + 0.001, 1e-6);
  EXPECT_EQ(monitor->overall(), OverallState::attention);
}

TEST_P(StallThresholdTest, restartIsOfferedAfterTwiceTheThresholdAndNotAtIt) {
  startWithThreshold();
  advance(2 * GetParam().seconds);
  EXPECT_FALSE(monitor->shouldOfferRestart());
  advance(0.001);
  EXPECT_TRUE(monitor->shouldOfferRestart());
}

TEST_P(StallThresholdTest, laterChangeOfTheVariableHasNoEffect) {
  startWithThreshold();
  platform.environment.set("DRIFTMARK_STALL_SECS", "100000");
  advance(GetParam().seconds + 0.001);
  EXPECT_TRUE(monitor->isStalled(transfer("/a.txt")));
}

INSTANTIATE_TEST_SUITE_P(
    Values, StallThresholdTest,
    testing::Values(
        ThresholdCase{"absent", std::nullopt, 300}, ThresholdCase{"ninety", "90", 90},
        ThresholdCase{"fraction", "90.5", 90.5}, ThresholdCase{"smallFraction", "2.5", 2.5},
        ThresholdCase{"fortyFive", "45", 45}, ThresholdCase{"zero", "0", 300},
        ThresholdCase{"zeroFraction", "0.0", 300}, ThresholdCase{"negative", "-5", 300},
        ThresholdCase{"word", "soon", 300}, ThresholdCase{"empty", "", 300},
        ThresholdCase{"notANumber", "nan", 300}, ThresholdCase{"numberAndWord", "90s", 300},
        ThresholdCase{"spaceInFront", " 90", 300}, ThresholdCase{"spaceBehind", "90 ", 300},
        ThresholdCase{"lineEndBehind", "90\n", 300}, ThresholdCase{"twoNumbers", "90 100", 300},
        ThresholdCase{"comma", "90,5", 300}, ThresholdCase{"twoPoints", "9.0.5", 300},
        ThresholdCase{"nulBehind", std::string("90\0", 3), 300},
        ThresholdCase{"large", "86400", 86400}),
    caseName);

struct SweepCase {
  std::string threshold;
  double interval;
};

class SweepIntervalTest : public MonitorTest, public testing::WithParamInterface<SweepCase> {};

TEST_P(SweepIntervalTest, isAThirdOfTheThresholdBetweenFiveAndThirtySeconds) {
  platform.environment.set("DRIFTMARK_STALL_SECS", GetParam().threshold);
  platform.fileSystem.pretendEverythingExists();
  start();
  ASSERT_TRUE(platform.mainQueue.timers().empty());
  item("/a.txt", " \u2191 1%");
  const auto timers = platform.mainQueue.timers();
  ASSERT_EQ(timers.size(), 1U);
  EXPECT_DOUBLE_EQ(timers.front().interval.count(), GetParam().interval);
  EXPECT_LT(timers.front().tolerance, timers.front().interval);

  changes = 0;
  advance(GetParam().interval - 0.001);
  EXPECT_EQ(changes, 0);
  advance(0.002);
  EXPECT_EQ(changes, 1);
}

INSTANTIATE_TEST_SUITE_P(Values, SweepIntervalTest,
                         testing::Values(SweepCase{"300", 30}, SweepCase{"600", 30},
                                         SweepCase{"90", 30}, SweepCase{"90.3", 30},
                                         SweepCase{"60", 20}, SweepCase{"45", 15},
                                         SweepCase{"15.3", 5.1}, SweepCase{"15", 5},
                                         SweepCase{"12", 5}, SweepCase{"6", 5}, SweepCase{"0.5", 5},
                                         SweepCase{"0", 30}),
                         [](const auto& each) {
                           std::string name = "secs" + each.param.threshold;
                           for (char& c : name)
                             c = c == '.' ? '_' : c;
                           return name;
                         });

} // namespace
} // namespace driftmark::test
