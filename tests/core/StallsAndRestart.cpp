#include "core/MonitorTest.h"

#include <optional>
#include <string>

namespace driftmark::test {
namespace {

const std::string cloud = " \u2601";

// ---- stalls with the default threshold ----

class StallsTest : public MonitorTest {
protected:
  void SetUp() override {
    platform.fileSystem.pretendEverythingExists();
    start();
  }
};

TEST_F(StallsTest, transferIsStalledOnlyAfterMoreThanTheThreshold) {
  startUpload("/a");
  jump(300);
  EXPECT_FALSE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
  jump(0.000001);
  EXPECT_TRUE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::attention);
  EXPECT_TRUE(monitor->longestStall());
}

TEST_F(StallsTest, longestStallIsThatOfTheOldestUpdate) {
  startUpload("/a");
  jump(100);
  startUpload("/b");
  jump(250);
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 350);
  jump(100);
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 450);
  startUpload("/a");
  EXPECT_DOUBLE_EQ(monitor->longestStall().value(), 350);
  startUpload("/b");
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
}

TEST_F(StallsTest, restartIsOfferedOnlyAfterMoreThanTwiceTheThreshold) {
  startUpload("/a");
  EXPECT_FALSE(monitor->shouldOfferRestart());
  jump(301);
  EXPECT_FALSE(monitor->shouldOfferRestart());
  jump(299);
  EXPECT_FALSE(monitor->shouldOfferRestart());
  jump(0.000001);
  EXPECT_TRUE(monitor->shouldOfferRestart());
}

TEST_F(StallsTest, restartIsOfferedForOneLongStallBesideLiveTransfers) {
  startUpload("/a");
  jump(601);
  startUpload("/b");
  EXPECT_TRUE(monitor->shouldOfferRestart());
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  item("/a", cloud);
  EXPECT_FALSE(monitor->shouldOfferRestart());
}

TEST_F(StallsTest, itemThatIsNotActiveCanBeStalled) {
  const ActiveItem item{.path = "/elsewhere",
                        .direction = Direction::upload,
                        .percent = std::nullopt,
                        .lastUpdate = earlier(now(), Seconds(301))};
  EXPECT_TRUE(monitor->isStalled(item));
  ActiveItem fresh = item;
  fresh.lastUpdate = now();
  EXPECT_FALSE(monitor->isStalled(fresh));
}

TEST_F(StallsTest, clockSetBackStallsNothing) {
  startUpload("/a");
  jump(-1000);
  EXPECT_FALSE(monitor->isStalled(transfer("/a")));
  EXPECT_EQ(monitor->overall(), OverallState::uploading);
  EXPECT_EQ(monitor->longestStall(), std::nullopt);
}

// ---- the threshold ----

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
        ThresholdCase{"leadingSpace", " 90", 300}, ThresholdCase{"trailingSpace", "90 ", 300},
        ThresholdCase{"trailingLineEnd", "90\n", 300}, ThresholdCase{"twoNumbers", "90 100", 300},
        ThresholdCase{"comma", "90,5", 300}, ThresholdCase{"twoPoints", "9.0.5", 300},
        ThresholdCase{"trailingNul", std::string("90\0", 3), 300},
        ThresholdCase{"large", "86400", 86400}),
    caseName);

} // namespace
} // namespace driftmark::test
