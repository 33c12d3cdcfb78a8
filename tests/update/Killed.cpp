// The program is killed between any two steps of an install or a move: a whole bundle always
// remains, and at the bundle's place there is a whole one or nothing.

#include "harness/OtherVolume.h"
#include "update/StepTracer.h"
#include "update/UpdateTest.h"

#include <optional>

#include <sys/wait.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;

/// Does what makes the program take steps, and kills it right before step `deadly`. False when it
/// takes fewer: it has then ended by itself. Absent where processes cannot be followed.
std::optional<bool> killBefore(int deadly, RunningCopy& copy, const std::string& button) {
  StepTracer tracer(copy.process.identifier(), [=](int step) {
    return step == deadly ? StepTracer::Verdict::kill : StepTracer::Verdict::goOn;
  });
  if (!tracer.isFollowing())
    return std::nullopt;
  copy.driver.press(button);
  copy.driver.awaitEnd();
  tracer.awaitEnd();
  const bool killed = WIFSIGNALED(copy.process.wait());
  Machine::killEverything();
  return killed;
}

/// The parameter is the step. The last one lies beyond the end, so that no step is left out.
class Killed : public UpdateTest, public testing::WithParamInterface<int> {
protected:
  void killAndLook(int beyondTheEnd) {
    const Tree newTree = release("1.1");
    RunningCopy copy = startInstalled();
    const fs::path work = machine_.workFolder(copy.process.identifier());
    check(copy);
    copy.driver.awaitAlert();
    const auto killed = killBefore(GetParam(), copy, "Install and Relaunch");
    if (!killed)
      GTEST_SKIP() << "this system does not let a process follow another";
    expectNothingLost(newTree, work);
    EXPECT_TRUE(*killed || treeAt(installed()) == newTree);
    EXPECT_FALSE(*killed && GetParam() == beyondTheEnd);
  }

private:
  void expectNothingLost(const Tree& newTree, const fs::path& work) const {
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

TEST_P(KilledUpdate, leavesAWholeBundle) {
  killAndLook(updateSteps);
}

INSTANTIATE_TEST_SUITE_P(BeforeStep, KilledUpdate, testing::Range(1, updateSteps + 1));

constexpr int updateStepsAcrossVolumes = 24;

class KilledUpdateAcrossVolumes : public Killed {};

TEST_P(KilledUpdateAcrossVolumes, leavesAWholeBundle) {
  const OtherVolume elsewhere;
  if (!elsewhere.exists())
    GTEST_SKIP() << "there is no second volume";
  machine_.moveTemporaryFiles(elsewhere.path());
  killAndLook(updateStepsAcrossVolumes);
}

INSTANTIATE_TEST_SUITE_P(BeforeStep, KilledUpdateAcrossVolumes,
                         testing::Range(1, updateStepsAcrossVolumes + 1));

constexpr int moveSteps = 10;

class KilledMove : public testing::TestWithParam<int> {
protected:
  Machine machine_;
};

TEST_P(KilledMove, leavesAWholeBundle) {
  const fs::path bundle = machine_.placeBundle(machine_.home() / "Downloads", "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  const auto killed = killBefore(GetParam(), copy, "Move and Reopen");
  if (!killed)
    GTEST_SKIP() << "this system does not let a process follow another";
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
