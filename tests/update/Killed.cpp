// The program is killed between any two steps of an install or a move: a whole bundle always
// remains, and the bundle's path has a whole bundle or nothing.

#include "harness/OtherVolume.h"
#include "harness/Waiting.h"
#include "update/StepTracer.h"
#include "update/UpdateTest.h"

#include <csignal>
#include <optional>

#include <sys/wait.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

/// Presses a button that starts the steps, and kills the program right before `lastStep`. Returns
/// false when the program takes fewer steps and ends; absent where processes cannot be
/// traced.
std::optional<bool> killBefore(int lastStep, RunningCopy& copy, const std::string& button) {
  StepTracer tracer(copy.process.identifier(), [=](int step) {
    return step == lastStep ? StepTracer::Verdict::kill : StepTracer::Verdict::proceed;
  });
  if (!tracer.isTracing())
    return std::nullopt;
  copy.driver.press(button);
  copy.driver.awaitEnd();
  tracer.awaitEnd();
  const bool killed = WIFSIGNALED(awaitExit(copy.process));
  TestMachine::killEverything();
  return killed;
}

/// The parameter is the step. The last value is one more than there are steps, so that none is
/// missed.
class Killed : public UpdateTest, public testing::WithParamInterface<int> {
protected:
  void expectWholeBundleAfterKill(int stepCount) {
    const Tree newTree = release("1.1");
    RunningCopy copy = startInstalled();
    const fs::path work = machine_.workFolder(copy.process.identifier());
    check(copy);
    copy.driver.awaitAlert();
    const auto killed = killBefore(GetParam(), copy, "Install and Relaunch");
    if (!killed)
      GTEST_SKIP() << "this system does not let a process trace another";
    expectNoBundleLost(newTree, work);
    EXPECT_TRUE(*killed || treeAt(installed()) == newTree);
    EXPECT_FALSE(*killed && GetParam() == stepCount);
  }

private:
  void expectNoBundleLost(const Tree& newTree, const fs::path& work) const {
    const Tree inPlace = treeAt(installed());
    const Tree oldCopy = treeAt(work / "Driftmark-old.app");
    if (inPlace.empty()) {
      EXPECT_EQ(oldCopy, installedTree_);
      EXPECT_EQ(treeAt(work / "Driftmark.app"), newTree);
    } else if (inPlace == newTree) {
      EXPECT_EQ(oldCopy, installedTree_);
    } else {
      EXPECT_EQ(inPlace, installedTree_);
    }
  }
};

constexpr int updateSteps = 12;

class KilledUpdate : public Killed {};

TEST_P(KilledUpdate, wholeBundleRemains) {
  expectWholeBundleAfterKill(updateSteps);
}

INSTANTIATE_TEST_SUITE_P(BeforeStep, KilledUpdate, testing::Range(1, updateSteps + 1));

constexpr int updateStepsAcrossVolumes = 24;

class KilledUpdateAcrossVolumes : public Killed {};

TEST_P(KilledUpdateAcrossVolumes, wholeBundleRemains) {
  const OtherVolume elsewhere;
  if (!elsewhere.exists())
    GTEST_SKIP() << "there is no second volume";
  machine_.moveTemporaryFiles(elsewhere.path());
  expectWholeBundleAfterKill(updateStepsAcrossVolumes);
}

INSTANTIATE_TEST_SUITE_P(BeforeStep, KilledUpdateAcrossVolumes,
                         testing::Range(1, updateStepsAcrossVolumes + 1));

class KilledDownload : public UpdateTest {};

TEST_F(KilledDownload, oldBundleRemains) {
  release("1.1");
  server_.serve(archivePath, {.isEndless = true});
  RunningCopy copy = startInstalled();
  agree(copy);
  ASSERT_TRUE(server_.awaitSent(archivePath, 1));
  copy.process.signal(SIGKILL);
  EXPECT_TRUE(WIFSIGNALED(awaitExit(copy.process)));
  EXPECT_TRUE(server_.awaitNoConnections());
  EXPECT_EQ(treeAt(installed()), installedTree_);
}

constexpr int moveSteps = 10;

class KilledMove : public testing::TestWithParam<int> {
protected:
  TestMachine machine_;
};

TEST_P(KilledMove, wholeBundleRemains) {
  const fs::path bundle = machine_.placeBundle(machine_.home() / "Downloads", "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  const auto killed = killBefore(GetParam(), copy, "Move and Reopen");
  if (!killed)
    GTEST_SKIP() << "this system does not let a process trace another";
  EXPECT_FALSE(*killed && GetParam() == moveSteps);
  if (treeAt(bundle) != asDownloaded) {
    EXPECT_TRUE(treeAt(bundle).empty());
    EXPECT_EQ(treeAt(machine_.trash() / "Driftmark.app"), asDownloaded);
    EXPECT_EQ(treeAt(machine_.applications() / "Driftmark.app"), asDownloaded);
  }
}

INSTANTIATE_TEST_SUITE_P(BeforeStep, KilledMove, testing::Range(1, moveSteps + 1));

} // namespace
} // namespace driftmark::test
