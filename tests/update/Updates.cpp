// A user checks for updates and installs one.

#include "harness/OtherVolume.h"
#include "harness/TemporaryFolder.h"
#include "harness/Waiting.h"
#include "update/StepTracer.h"
#include "update/UpdateTest.h"

#include <csignal>

#include <sys/resource.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class Updates : public UpdateTest {};

/// As long as this object lives, programs are started with SIGXFSZ ignored: a write beyond a limit
/// fails, like one on a full volume.
class ProgramsIgnoreFileSizeSignal {
public:
  ProgramsIgnoreFileSizeSignal() = default;
  ProgramsIgnoreFileSizeSignal(const ProgramsIgnoreFileSizeSignal&) = delete;
  ProgramsIgnoreFileSizeSignal& operator=(const ProgramsIgnoreFileSizeSignal&) = delete;
  ~ProgramsIgnoreFileSizeSignal() { EXPECT_NE(std::signal(SIGXFSZ, before_), SIG_ERR); }

private:
  void (*const before_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(Updates, acceptedUpdateIsInstalledAndRelaunched) {
  const Tree newTree = release("1.1", "Calmer waters.\n& <b>no</b> markup");
  RunningCopy copy = startInstalled();
  check(copy);
  expectAlert(copy.driver, "Driftmark 1.1 is available",
              "You have 1.0.\n\nCalmer waters.\n& <b>no</b> markup", offerButtons);
  copy.log.readUntil("Driftmark: update 1.1 available (running 1.0)\n");
  copy.driver.press("Install and Relaunch");
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(installed()), newTree);

  const fs::path work = machine_.workFolder(copy.process.identifier());
  EXPECT_EQ(treeAt(work / "Driftmark-old.app"), installedTree_);
  EXPECT_FALSE(fs::exists(work / "Driftmark.app"));
  EXPECT_EQ(contentsOf(machine_.programsTemporaryFolder() / "Driftmark-update.zip"),
            contentsOf(newArchive()));
  EXPECT_THAT(requestedPaths(), ElementsAre(manifestPath, archivePath, manifestPath));
}

TEST_F(Updates, laterKeepsOldVersionAndAsksAgain) {
  release("1.1");
  RunningCopy copy = startInstalled();
  for (int time = 0; time < 2; ++time) {
    check(copy);
    expectAlert(copy.driver, "Driftmark 1.1 is available", "You have 1.0.", offerButtons);
    copy.driver.press("Later");
    expectStarted(copy.driver);
  }
  quit(copy.driver);
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_EQ(treeAt(installed()), installedTree_);
  EXPECT_THAT(requestedPaths(), testing::Each(manifestPath));
  EXPECT_THAT(TestMachine::awaitEndOfEverything(), testing::IsEmpty());
}

TEST_F(Updates, sameOrOlderVersionIsUpToDate) {
  for (const char* version : {"1.0", "1.0.0", "0.9.9"}) {
    release(version);
    RunningCopy copy = startInstalled();
    check(copy);
    expectAlert(copy.driver, "Driftmark is up to date", "Version 1.0 is the latest.");
    copy.driver.press("OK");
    copy.log.readUntil("Driftmark: up to date (1.0)\n");
    quit(copy.driver);
  }
}

TEST_F(Updates, repeatedCheckSendsOneRequest) {
  release("1.0");
  server_.hold(manifestPath);
  RunningCopy copy = startInstalled();
  check(copy);
  check(copy);
  ASSERT_TRUE(server_.awaitRequests(manifestPath, 1));
  server_.release(manifestPath);
  copy.driver.awaitAlert();
  copy.driver.press("OK");
  expectStarted(copy.driver);
  EXPECT_THAT(requestedPaths(), ElementsAre(manifestPath));
}

TEST_F(Updates, agreementDuringDownloadStartsSecondDownload) {
  const Tree newTree = release("1.1");
  server_.hold(archivePath);
  RunningCopy copy = startInstalled();
  agree(copy);
  expectStarted(copy.driver);
  ASSERT_TRUE(server_.awaitRequests(archivePath, 1));

  const char* const second = "/driftmark/second.zip";
  announce("1.1", newArchive(), {}, second);
  server_.hold(second);
  agree(copy);
  expectStarted(copy.driver);
  ASSERT_TRUE(server_.awaitRequests(second, 1));

  server_.release(archivePath);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(installed()), newTree);
}

TEST_F(Updates, bundleInPathWithSpacesIsUpdated) {
  const fs::path spaced = machine_.applications() / "Drift  mark.app";
  fs::rename(installed(), spaced);
  const Tree newTree = release("1.1");
  RunningCopy copy = startInstalled(spaced);
  agree(copy);
  expectRelaunch(copy, spaced, "1.1");
  EXPECT_EQ(treeAt(spaced), newTree);
}

// The command that opens the new copy puts the path in quotes and escapes nothing.
TEST_F(Updates, bundleInPathWithDoubleQuoteIsUpdatedButNotReopened) {
  const fs::path quoted = machine_.applications() / "Drift\"mark.app";
  fs::rename(installed(), quoted);
  const Tree newTree = release("1.1");
  RunningCopy copy = startInstalled(quoted);
  agree(copy);
  copy.log.readUntil("Driftmark: updated bundle at /Applications/Drift\"mark.app, relaunching\n");
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_THAT(TestMachine::awaitEndOfEverything(), testing::IsEmpty());
  EXPECT_FALSE(machine_.copyOpenedWithin(std::chrono::milliseconds(0)));
  EXPECT_EQ(treeAt(quoted), newTree);
}

TEST_F(Updates, downloadOnOtherVolumeIsInstalled) {
  const OtherVolume elsewhere;
  if (!elsewhere.exists())
    GTEST_SKIP() << "there is no second volume";
  machine_.moveTemporaryFiles(elsewhere.path());
  const Tree newTree = release("1.1");
  RunningCopy copy = startInstalled();
  agree(copy);
  expectRelaunch(copy, installed(), "1.1");
  EXPECT_EQ(treeAt(installed()), newTree);
  EXPECT_EQ(treeAt(machine_.workFolder(copy.process.identifier()) / "Driftmark-old.app"),
            installedTree_);
}

TEST_F(Updates, failedFirstMoveChangesNothing) {
  release("1.1");
  machine_.useUnprivilegedUser();
  machine_.giveToUser(installed());
  installedTree_ = treeAt(installed());
  fs::permissions(machine_.applications(), fs::perms::owner_read | fs::perms::owner_exec |
                                               fs::perms::others_read | fs::perms::others_exec);
  RunningCopy copy = startInstalled();
  expectFailure(copy, "“Driftmark.app” couldn’t be moved: Permission denied");
}

TEST_F(Updates, bundleGoesBackWhenItsVolumeIsFull) {
  const OtherVolume elsewhere;
  if (!elsewhere.exists())
    GTEST_SKIP() << "there is no second volume";
  machine_.moveTemporaryFiles(elsewhere.path());
  release("1.1");
  const ProgramsIgnoreFileSizeSignal ignored;
  RunningCopy copy = startInstalled();
  const pid_t program = copy.process.identifier();
  const fs::path oldCopy = machine_.workFolder(program) / "Driftmark-old.app";
  const auto limitOnceCopied = [&](int /*step*/) {
    // From here on no larger file can be written, as on a full volume.
    const rlimit limit{1000, RLIM_INFINITY};
    if (fs::exists(oldCopy))
      prlimit(program, RLIMIT_FSIZE, &limit, nullptr);
    return StepTracer::Verdict::proceed;
  };
  check(copy);
  copy.driver.awaitAlert();
  StepTracer tracer(program, limitOnceCopied);
  if (!tracer.isTracing())
    GTEST_SKIP() << "this system does not let a process trace another";
  copy.driver.press("Install and Relaunch");
  expectAlert(copy.driver, "Update failed", "“Driftmark.app” couldn’t be moved: File too large");
  EXPECT_EQ(treeAt(installed()), installedTree_);
  EXPECT_FALSE(fs::exists(oldCopy));
  EXPECT_THAT(treeAt(machine_.applications()), testing::SizeIs(installedTree_.size() + 1));
}

TEST_F(Updates, onlyCopyInWorkFolderIsNotErased) {
  release("1.1");
  RunningCopy copy = startInstalled();
  const fs::path oldCopy = machine_.workFolder(copy.process.identifier()) / "Driftmark-old.app";
  const auto takePlace = [&](int /*step*/) {
    if (!fs::exists(installed()))
      fs::create_directory(installed());
    return StepTracer::Verdict::proceed;
  };
  check(copy);
  copy.driver.awaitAlert();
  StepTracer tracer(copy.process.identifier(), takePlace);
  if (!tracer.isTracing())
    GTEST_SKIP() << "this system does not let a process trace another";
  copy.driver.press("Install and Relaunch");
  expectAlert(copy.driver, "Update failed", "“Driftmark.app” couldn’t be moved: File exists");
  copy.driver.press("OK");
  EXPECT_EQ(treeAt(oldCopy), installedTree_);

  agree(copy);
  const icloud::Window alert = awaitAlert(copy.driver, "Update failed");
  EXPECT_THAT(alert.texts.back(), HasSubstr(oldCopy.string()));
  EXPECT_EQ(treeAt(oldCopy), installedTree_);
}

// A folder without write permission cannot be moved into another one.
TEST_F(Updates, failedSecondMoveRestoresOldBundle) {
  const fs::path bundle = build("1.1");
  fs::permissions(bundle, fs::perms::owner_read | fs::perms::owner_exec);
  announce("1.1", pack(bundle));
  machine_.useUnprivilegedUser();
  RunningCopy copy = startInstalled();
  expectFailure(copy, "“Driftmark.app” couldn’t be moved: Permission denied");
  EXPECT_FALSE(fs::exists(machine_.workFolder(copy.process.identifier()) / "Driftmark-old.app"));
}

} // namespace
} // namespace driftmark::test
