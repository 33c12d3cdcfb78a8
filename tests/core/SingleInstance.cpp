// How a new instance ends older copies.

#include "app/SingleInstance.h"

#include "support/TestPlatform.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SingleInstanceTest : public testing::Test {
protected:
  SingleInstanceTest() {
    platform.bundle.setIdentifier(identifier);
    platform.application.setProcessIdentifier(100);
    copy(100, std::nullopt);
  }

  /// Adds a running copy. It ends `endsAfter` a request to end, or never.
  void copy(std::int32_t process, std::optional<Seconds> endsAfter) {
    platform.runningApplications.add(identifier, process, endsAfter);
  }

  /// Takes over and returns how long that took.
  double takeOver() {
    const Date before = platform.clock.now();
    SingleInstance::takeOver(platform.platform());
    return Seconds(platform.clock.now() - before).count();
  }

  const std::string identifier = "com.example.driftmark";
  TestPlatform platform;
};

TEST_F(SingleInstanceTest, programOutsideBundleEndsNoCopy) {
  platform.bundle.setIdentifier(std::nullopt);
  copy(200, Seconds(0));
  EXPECT_EQ(takeOver(), 0.0);
  EXPECT_THAT(platform.runningApplications.take(), IsEmpty());
  EXPECT_THAT(platform.systemLog.take(), IsEmpty());
}

TEST_F(SingleInstanceTest, onlyCopyIsSilent) {
  platform.runningApplications.add("com.example.other", 200, std::nullopt);
  EXPECT_EQ(takeOver(), 0.0);
  EXPECT_THAT(platform.runningApplications.take(), IsEmpty());
  EXPECT_THAT(platform.systemLog.take(), IsEmpty());
}

TEST_F(SingleInstanceTest, olderCopyIsAskedToEnd) {
  copy(200, Seconds(0.12));
  EXPECT_NEAR(takeOver(), 0.15, 1e-6);
  EXPECT_THAT(platform.runningApplications.take(), ElementsAre("terminate 200"));
  EXPECT_THAT(platform.systemLog.take(),
              ElementsAre("Driftmark: quitting 1 already-running instance(s)"));
}

TEST_F(SingleInstanceTest, copyThatEndsAtOnceCostsNoWait) {
  copy(200, Seconds(0));
  EXPECT_EQ(takeOver(), 0.0);
}

TEST_F(SingleInstanceTest, copyThatIgnoresRequestIsKilledAfterThreeSeconds) {
  copy(200, std::nullopt);
  copy(300, Seconds(1));
  copy(400, std::nullopt);
  EXPECT_NEAR(takeOver(), 3.0, 1e-6);
  EXPECT_THAT(
      platform.runningApplications.take(),
      ElementsAre("terminate 200", "terminate 300", "terminate 400", "kill 200", "kill 400"));
  EXPECT_THAT(platform.systemLog.take(),
              ElementsAre("Driftmark: quitting 3 already-running instance(s)",
                          "Driftmark: instance 200 ignored the quit request; killing it",
                          "Driftmark: instance 400 ignored the quit request; killing it"));
}

class StartTimes : public SingleInstanceTest {
protected:
  using StartTime = RunningApplications::StartTime;

  /// Whether this process, 100, asks a copy to end.
  bool ends(std::int32_t process, std::optional<StartTime> start,
            std::optional<StartTime> ownStart) {
    copy(process, Seconds(0));
    if (start)
      platform.runningApplications.setStartTime(process, *start);
    if (ownStart)
      platform.runningApplications.setStartTime(100, *ownStart);
    takeOver();
    return !platform.runningApplications.take().empty();
  }
};

TEST_F(StartTimes, earlierCopyIsEnded) {
  EXPECT_TRUE(ends(200, 5, 6));
}

TEST_F(StartTimes, laterCopyIsSparedInSilence) {
  EXPECT_FALSE(ends(99, 7, 6));
  EXPECT_THAT(platform.systemLog.take(), IsEmpty());
}

TEST_F(StartTimes, inTheSameInstantTheSmallerIdentifierIsTheOlderCopy) {
  EXPECT_TRUE(ends(99, 6, 6));
}

TEST_F(StartTimes, inTheSameInstantTheLargerIdentifierIsTheNewerCopy) {
  EXPECT_FALSE(ends(101, 6, 6));
}

TEST_F(StartTimes, copyWithUnknownStartIsEnded) {
  EXPECT_TRUE(ends(200, std::nullopt, 6));
}

TEST_F(StartTimes, copyIsEndedWhenOwnStartIsUnknown) {
  EXPECT_TRUE(ends(200, 7, std::nullopt));
}

TEST_F(StartTimes, sparedCopiesAreNotCountedNorKilled) {
  copy(300, std::nullopt);
  platform.runningApplications.setStartTime(300, 9);
  copy(200, Seconds(0));
  platform.runningApplications.setStartTime(200, 5);
  platform.runningApplications.setStartTime(100, 6);
  EXPECT_EQ(takeOver(), 0.0);
  EXPECT_THAT(platform.runningApplications.take(), ElementsAre("terminate 200"));
  EXPECT_THAT(platform.systemLog.take(),
              ElementsAre("Driftmark: quitting 1 already-running instance(s)"));
}

TEST_F(StartTimes, oneOfManySimultaneousCopiesRemains) {
  const std::vector<std::int32_t> processes{100, 101, 102, 103};
  platform.runningApplications.remove(100);
  for (const std::int32_t process : processes) {
    copy(process, Seconds(0));
    platform.runningApplications.setStartTime(process, 6);
  }
  std::vector<std::string> requests;
  for (const std::int32_t process : processes) {
    platform.application.setProcessIdentifier(process);
    takeOver();
    for (std::string& request : platform.runningApplications.take())
      requests.push_back(std::move(request));
  }
  EXPECT_THAT(std::set<std::string>(requests.begin(), requests.end()),
              ElementsAre("terminate 100", "terminate 101", "terminate 102"));
}

TEST_F(SingleInstanceTest, slowestCopyIsWaitedFor) {
  copy(200, Seconds(2.9));
  copy(300, Seconds(0.1));
  EXPECT_NEAR(takeOver(), 2.9, 1e-6);
  EXPECT_THAT(platform.runningApplications.take(), ElementsAre("terminate 200", "terminate 300"));
}

} // namespace
} // namespace driftmark::test
