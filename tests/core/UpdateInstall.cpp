// How an update is downloaded, verified and installed, and how each step fails.

#include "UpdateInstallTest.h"

#include <algorithm>
#include <utility>

#include <gmock/gmock.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(UpdateInstallTest, updateRunsItsStepsInOrder) {
  install();
  EXPECT_THAT(operations(),
              ElementsAre("remove " + zip, "move " + downloaded + " to " + zip, "remove " + work,
                          "create " + work, "run /usr/bin/ditto -xk " + zip + " " + work,
                          "run /usr/bin/codesign --verify --deep --strict " + newBundle,
                          "run /usr/bin/codesign -dv " + newBundle,
                          "move " + running + " to " + oldCopy,
                          "move " + newBundle + " to " + running));
  EXPECT_THAT(takeLog(),
              ElementsAre("Driftmark: updated bundle at /Applications/Driftmark.app, relaunching"));
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

TEST_F(UpdateInstallTest, shellOpensNewBundleAfterDelay) {
  install();
  ASSERT_EQ(platform.childProcesses.detached().size(), 1U);
  const ToolCommand shell = platform.childProcesses.detached()[0];
  EXPECT_EQ(shell.executable, "/bin/sh");
  EXPECT_THAT(shell.arguments,
              ElementsAre("-c", "sleep 0.5; /usr/bin/open \"/Applications/Driftmark.app\""));
}

TEST_F(UpdateInstallTest, pathIsQuotedButNotEscaped) {
  platform.bundle.setPath("/Applications/My \"Drift\".app");
  platform.fileSystem.add("/Applications/My \"Drift\".app");
  install();
  EXPECT_EQ(platform.childProcesses.detached().at(0).arguments.at(1),
            "sleep 0.5; /usr/bin/open \"/Applications/My \"Drift\".app\"");
}

TEST_F(UpdateInstallTest, shellLaunchErrorIsIgnored) {
  platform.childProcesses.failLaunches({"-c", "sleep 0.5; /usr/bin/open \"" + running + "\""},
                                       {LaunchError::Stage::launch, "No shell"});
  install();
  EXPECT_EQ(platform.application.terminateRequests(), 1);
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
}

TEST_F(UpdateInstallTest, oldCopyAndArchiveAreKept) {
  install();
  EXPECT_TRUE(platform.fileSystem.fileExists(oldCopy));
  EXPECT_TRUE(platform.fileSystem.fileExists(zip));
  EXPECT_FALSE(platform.fileSystem.fileExists(newBundle));
}

TEST_F(UpdateInstallTest, leftoversOfEarlierUpdatesAreReplaced) {
  platform.fileSystem.add(zip);
  platform.fileSystem.add(work);
  platform.fileSystem.add(work + "/stale");
  install();
  EXPECT_FALSE(platform.fileSystem.fileExists(work + "/stale"));
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

TEST_F(UpdateInstallTest, toolOutputIsDiscardedExceptForTeam) {
  install();
  EXPECT_EQ(platform.childProcesses.runs(unpack).at(0)->output(), ToolOutput::discard);
  EXPECT_EQ(platform.childProcesses.runs(checkSignature).at(0)->output(), ToolOutput::discard);
  EXPECT_EQ(platform.childProcesses.runs(describe).at(0)->output(), ToolOutput::captureError);
}

TEST_F(UpdateInstallTest, failedDownloadShowsTransportError) {
  agree();
  platform.httpClient.failDownload({"The connection was lost."});
  platform.settle();
  EXPECT_THAT(platform.dialogs.take(), failed("The connection was lost."));
  EXPECT_EQ(platform.application.activations(), 2);
  EXPECT_THAT(operations(), IsEmpty());
  expectUntouched();
}

TEST_F(UpdateInstallTest, downloadThatCannotBeStagedIsReported) {
  platform.fileSystem.fail("move " + downloaded + " to " + zip, "No space left.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("Could not download the update."));
  EXPECT_THAT(operations(), ElementsAre("remove " + zip, "move " + downloaded + " to " + zip));
  expectUntouched();
}

TEST_F(UpdateInstallTest, workFolderThatCannotBeMadeIsReported) {
  platform.fileSystem.fail("create " + work, "No space left.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No space left."));
  EXPECT_EQ(platform.childProcesses.runs().size(), 0U);
  expectUntouched();
}

TEST_F(UpdateInstallTest, missingWorkFolderNeedsNoRemoval) {
  platform.fileSystem.fail("remove " + work, "No such folder.");
  install();
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

/// A link that an earlier archive left there would lead the next one out of the folder.
TEST_F(UpdateInstallTest, nothingIsUnpackedOverWorkFolderThatCannotBeRemoved) {
  platform.fileSystem.add(work);
  platform.fileSystem.fail("remove " + work, "Busy.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("Busy."));
  EXPECT_THAT(platform.childProcesses.runs(), testing::IsEmpty());
  expectUntouched();
}

TEST_F(UpdateInstallTest, programThatRunsFromItsWorkFolderIsNotErased) {
  for (const std::string& kept : {oldCopy, newBundle, work + "/Renamed.app"}) {
    platform.bundle.setPath(kept);
    platform.fileSystem.add(work);
    platform.fileSystem.add(kept);
    platform.fileSystem.add(kept + "/Contents/Info.plist");
    install();
    EXPECT_THAT(platform.dialogs.take(),
                failed("Driftmark runs from the folder that updates are unpacked in. Move " + kept +
                       " elsewhere before you update."));
    EXPECT_TRUE(platform.fileSystem.fileExists(kept));
    EXPECT_THAT(platform.childProcesses.runs(), testing::IsEmpty());
  }
}

TEST_F(UpdateInstallTest, archiveThatCannotBeUnpackedIsReported) {
  platform.childProcesses.script(unpack, ToolResult{"", 1});
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("The update archive could not be unpacked."));
  EXPECT_EQ(platform.childProcesses.runs().size(), 1U);
  expectUntouched();
}

TEST_F(UpdateInstallTest, unpackerLaunchErrorIsReported) {
  platform.childProcesses.failLaunches(unpack, {LaunchError::Stage::launch, "No such tool"});
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No such tool"));
  expectUntouched();
}

TEST_F(UpdateInstallTest, bundleInSubfolderIsNotFound) {
  unpacked = work + "/release/Driftmark.app";
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("The update archive did not contain Driftmark.app."));
  EXPECT_EQ(platform.childProcesses.runs().size(), 1U);
  expectUntouched();
}

TEST_F(UpdateInstallTest, linkInPlaceOfNewBundleIsRefused) {
  platform.childProcesses.onRun(
      [this](const ToolCommand&) { platform.fileSystem.addLink(newBundle, running); });
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("The update's code signature is invalid."));
  expectUntouched();
}

TEST_F(UpdateInstallTest, runningCopyThatCannotBeMovedIsKept) {
  platform.fileSystem.fail("move " + running + " to " + oldCopy, "Not permitted.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("Not permitted."));
  EXPECT_TRUE(platform.fileSystem.fileExists(newBundle));
  expectUntouched();
}

TEST_F(UpdateInstallTest, oldCopyIsRestoredWhenNewOneCannotBePlaced) {
  platform.fileSystem.fail("move " + newBundle + " to " + running, "No space left.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No space left."));
  EXPECT_EQ(operations().back(), "move " + oldCopy + " to " + running);
  expectUntouched();
}

TEST_F(UpdateInstallTest, failedRestoreShowsOriginalError) {
  platform.fileSystem.fail("move " + newBundle + " to " + running, "No space left.");
  platform.fileSystem.fail("move " + oldCopy + " to " + running, "Not permitted.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("No space left."));
  EXPECT_TRUE(platform.fileSystem.fileExists(oldCopy));
  EXPECT_EQ(platform.application.terminateRequests(), 0);
}

TEST_F(UpdateInstallTest, onlyCopyInWorkFolderIsNotErased) {
  platform.fileSystem.fail("move " + newBundle + " to " + running, "No space left.");
  platform.fileSystem.fail("move " + oldCopy + " to " + running, "Not permitted.");
  install();
  platform.dialogs.take();
  operations();
  platform.fileSystem.add(running); // a folder of another program's

  install();
  EXPECT_THAT(platform.dialogs.take(), failed("The only copy of Driftmark is now at " + oldCopy +
                                              ". Move it back before you update."));
  EXPECT_THAT(operations(), ElementsAre("remove " + zip, "move " + downloaded + " to " + zip));
  EXPECT_TRUE(platform.fileSystem.fileExists(oldCopy + "/Contents/Info.plist"));
}

TEST_F(UpdateInstallTest, updateIsTriedAgainAfterRestore) {
  platform.fileSystem.fail("move " + newBundle + " to " + running, "No space left.");
  install();
  platform.fileSystem.fail("move " + newBundle + " to " + running, "Still no space.");
  platform.dialogs.take();
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("Still no space."));
  EXPECT_TRUE(platform.fileSystem.fileExists(running));
}

TEST_F(UpdateInstallTest, executableOutsideBundleDownloadsNothing) {
  platform.bundle.setIdentifier(std::nullopt);
  platform.dialogs.answer(0);
  checker->check(false);
  reply(manifest("1.5"));
  EXPECT_EQ(platform.dialogs.take().back(),
            (Alert{"Update failed", "The file could not be saved.", {}}));
  takeLog();
  EXPECT_THAT(platform.httpClient.downloads(), IsEmpty());
  EXPECT_THAT(operations(), IsEmpty());
  expectUntouched();
}

TEST_F(UpdateInstallTest, updateWithoutTemporaryFolderFails) {
  platform.fileSystem.failTemporaryDirectory("It belongs to somebody else.");
  install();
  EXPECT_THAT(platform.dialogs.take(), failed("It belongs to somebody else."));
  EXPECT_THAT(operations(), IsEmpty());
  expectUntouched();
}

TEST_F(UpdateInstallTest, secondAgreementStartsSecondDownload) {
  agree();
  agree();
  EXPECT_EQ(platform.httpClient.downloads().size(), 2U);
  for (const std::string file : {"/private/var/one", "/private/var/two"}) {
    platform.fileSystem.add(file);
    platform.httpClient.replyFile(file);
    platform.settle();
  }
  EXPECT_EQ(platform.application.terminateRequests(), 2);
  EXPECT_TRUE(platform.fileSystem.fileExists(running));
}

TEST_F(UpdateInstallTest, downloadIsStagedEvenAfterRelease) {
  agree();
  checker.reset();
  platform.fileSystem.add(downloaded);
  platform.httpClient.replyFile(downloaded);
  platform.settle();
  EXPECT_TRUE(platform.fileSystem.fileExists(zip));
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_THAT(platform.childProcesses.runs(), IsEmpty());
}

} // namespace
} // namespace driftmark::test
