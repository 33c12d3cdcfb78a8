// When the move to Applications is offered, its steps, and how each fails.

#include "install/UserInstall.h"

#include "support/TestPlatform.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UserInstallTest : public testing::Test {
protected:
  UserInstallTest() {
    runFrom("/Users/ada/Downloads/Driftmark.app");
    platform.childProcesses.onRun([this](const ToolCommand& command) {
      std::string words = "run " + command.executable;
      for (const std::string& argument : command.arguments)
        words += " " + argument;
      platform.fileSystem.note(words);
    });
  }

  void runFrom(const std::string& path) {
    bundle = path;
    platform.bundle.setPath(path);
    platform.fileSystem.add(path);
    platform.fileSystem.add(path + "/Contents/Info.plist");
  }

  bool offer() { return UserInstall::offerIfNeeded(platform.platform()); }

  /// The offer to a user who runs the program from `location`.
  static Alert question(const std::string& location) {
    return {"Move Driftmark to your Applications folder?",
            "Driftmark is running from " + location +
                ". It will move itself to your Applications folder and reopen. That needs no "
                "administrator password, and the copy you downloaded goes to the Trash.",
            {"Move and Reopen", "Not Now"}};
  }

  static Alert failure(const std::string& error) {
    return {"Could not move Driftmark",
            "Drag Driftmark.app into your Applications folder in Finder, then open it again.\n\n(" +
                error + ")",
            {}};
  }

  std::vector<std::string> operations() { return platform.fileSystem.takeOperations(); }

  /// Makes the copy to `target` end with this status.
  void copyingEnds(const std::string& target, int status) {
    platform.childProcesses.script({bundle, target}, ToolResult{"", status});
  }

  bool skips() const { return platform.userDefaults.boolean("skipUserApplicationsInstall"); }

  TestPlatform platform;
  std::string bundle;
  const std::string shared = "/Applications/Driftmark.app";
  const std::string own = "/Users/ada/Applications/Driftmark.app";
};

TEST_F(UserInstallTest, nothingIsOfferedInApplicationsFolder) {
  for (const std::string& path : {shared, own}) {
    runFrom(path);
    EXPECT_FALSE(offer());
  }
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_EQ(platform.application.activations(), 0);
}

TEST_F(UserInstallTest, executableOutsideBundleGetsNoOffer) {
  platform.bundle.setIdentifier(std::nullopt);
  runFrom("/Users/ada/Downloads");
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
  EXPECT_THAT(operations(), IsEmpty());
  EXPECT_FALSE(skips());
}

TEST_F(UserInstallTest, subfolderOfApplicationsFolderGetsOffer) {
  for (const std::string folder :
       {"/Applications/Utilities", "/Applications2", "/Library/Applications"}) {
    runFrom(folder + "/Driftmark.app");
    EXPECT_FALSE(offer());
    EXPECT_THAT(platform.dialogs.take(), ElementsAre(question(folder)));
    platform.userDefaults = TestUserDefaults();
  }
}

TEST_F(UserInstallTest, offerNamesFolder) {
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(), ElementsAre(question("~/Downloads")));
  EXPECT_EQ(platform.application.activations(), 1);
}

TEST_F(UserInstallTest, offerNamesFolderOutsideHomeInFull) {
  runFrom("/Users/adam/Downloads/Driftmark.app");
  offer();
  EXPECT_THAT(platform.dialogs.take(), ElementsAre(question("/Users/adam/Downloads")));
}

TEST_F(UserInstallTest, offerNamesHomeItself) {
  runFrom("/Users/ada/Driftmark.app");
  offer();
  EXPECT_THAT(platform.dialogs.take(), ElementsAre(question("~")));
}

TEST_F(UserInstallTest, offerNamesNoTranslocatedFolder) {
  runFrom("/private/var/folders/x/AppTranslocation/7F/d/Driftmark.app");
  offer();
  EXPECT_THAT(platform.dialogs.take(), ElementsAre(question("a temporary location")));
}

TEST_F(UserInstallTest, declinedOfferIsNotRepeated) {
  EXPECT_FALSE(offer());
  EXPECT_TRUE(skips());
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
  EXPECT_THAT(operations(), IsEmpty());

  runFrom("/Users/ada/Desktop/Driftmark.app");
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(), IsEmpty());
}

TEST_F(UserInstallTest, unansweredOfferIsRepeated) {
  platform.dialogs.leaveUnanswered();
  EXPECT_FALSE(offer());
  EXPECT_FALSE(skips());
  EXPECT_THAT(operations(), IsEmpty());
}

TEST_F(UserInstallTest, moveRunsItsStepsInOrder) {
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(operations(),
              ElementsAre("create /Applications", "run /usr/bin/ditto " + bundle + " " + shared,
                          "run /usr/bin/xattr -dr com.apple.quarantine " + shared,
                          "trash " + bundle));
  ASSERT_EQ(platform.childProcesses.detached().size(), 1U);
  const ToolCommand shell = platform.childProcesses.detached()[0];
  EXPECT_EQ(shell.executable, "/bin/sh");
  EXPECT_THAT(shell.arguments,
              ElementsAre("-c", "sleep 0.5; /usr/bin/open \"/Applications/Driftmark.app\""));
  EXPECT_EQ(platform.application.terminateRequests(), 1);
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
  EXPECT_FALSE(platform.userDefaults.has("skipUserApplicationsInstall"));
}

TEST_F(UserInstallTest, translocatedCopyIsNotTrashed) {
  runFrom("/private/var/folders/x/AppTranslocation/7F/d/Driftmark.app");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_EQ(operations().back(), "run /usr/bin/xattr -dr com.apple.quarantine " + shared);
  EXPECT_TRUE(platform.fileSystem.fileExists(bundle));
}

TEST_F(UserInstallTest, copyThatCannotBeTrashedIsKept) {
  platform.fileSystem.fail("trash " + bundle, "No trash.");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_EQ(platform.dialogs.take().size(), 1U);
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

TEST_F(UserInstallTest, userFolderIsTriedSecond) {
  copyingEnds(shared, 1);
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(operations(),
              ElementsAre("create /Applications", "run /usr/bin/ditto " + bundle + " " + shared,
                          "create /Users/ada/Applications",
                          "run /usr/bin/ditto " + bundle + " " + own,
                          "run /usr/bin/xattr -dr com.apple.quarantine " + own, "trash " + bundle));
  EXPECT_EQ(platform.childProcesses.detached().at(0).arguments.at(1),
            "sleep 0.5; /usr/bin/open \"" + own + "\"");
}

TEST_F(UserInstallTest, folderThatCannotBeMadeIsStillTried) {
  platform.fileSystem.fail("create /Applications", "It is there.");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_EQ(platform.childProcesses.runs({bundle, shared}).size(), 1U);
}

TEST_F(UserInstallTest, olderCopyIsRemovedFirst) {
  platform.fileSystem.add(shared);
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(operations(), ElementsAre("create /Applications", "remove " + shared,
                                        "run /usr/bin/ditto " + bundle + " " + shared,
                                        "run /usr/bin/xattr -dr com.apple.quarantine " + shared,
                                        "trash " + bundle));
}

TEST_F(UserInstallTest, linkToNothingIsRemovedFirst) {
  platform.fileSystem.addLink(shared, "/Volumes/Away/Driftmark.app");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_EQ(operations().at(1), "remove " + shared);
}

TEST_F(UserInstallTest, runningBundleUnderOtherSpellingIsNotRemoved) {
  platform.fileSystem.addLink(shared, bundle);
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(operations(),
              ElementsAre("create /Applications", "create /Users/ada/Applications",
                          "run /usr/bin/ditto " + bundle + " " + own,
                          "run /usr/bin/xattr -dr com.apple.quarantine " + own, "trash " + bundle));
}

TEST_F(UserInstallTest, runningBundleInBothFoldersStaysInPlace) {
  platform.fileSystem.addLink(shared, bundle);
  platform.fileSystem.addLink(own, bundle);
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(question("~/Downloads"), failure("The file could not be saved.")));
  EXPECT_THAT(operations(), ElementsAre("create /Applications", "create /Users/ada/Applications"));
}

TEST_F(UserInstallTest, olderCopyThatHoldsRunningBundleIsNotRemoved) {
  platform.fileSystem.add(shared);
  runFrom(shared + "/Contents/Resources/Driftmark.app");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(operations(), testing::Not(testing::Contains("remove " + shared)));
  EXPECT_EQ(platform.childProcesses.runs({bundle, own}).size(), 1U);
}

/// The folder of the bundle may still be there.
TEST_F(UserInstallTest, olderCopyStaysWhenRunningBundleIsGone) {
  platform.fileSystem.add(shared);
  platform.fileSystem.remove(bundle + "/Contents/Info.plist");
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_TRUE(platform.fileSystem.fileExists(shared));
  EXPECT_EQ(platform.dialogs.take().back(), failure("The file could not be saved."));
  EXPECT_THAT(platform.childProcesses.runs(), IsEmpty());
  EXPECT_THAT(operations(), IsEmpty());
}

TEST_F(UserInstallTest, nextFolderIsTriedWhenOlderCopyCannotBeRemoved) {
  platform.fileSystem.add(shared);
  platform.fileSystem.fail("remove " + shared, "Not permitted.");
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_THAT(platform.childProcesses.runs({bundle, shared}), IsEmpty());
  EXPECT_EQ(platform.childProcesses.runs({bundle, own}).size(), 1U);
}

TEST_F(UserInstallTest, lastRemovalErrorIsShown) {
  platform.fileSystem.add(shared);
  platform.fileSystem.add(own);
  platform.fileSystem.fail("remove " + shared, "Not permitted.");
  platform.fileSystem.fail("remove " + own, "Locked.");
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(), ElementsAre(question("~/Downloads"), failure("Locked.")));
}

TEST_F(UserInstallTest, failureInBothFoldersLeavesProgramInPlace) {
  copyingEnds(shared, 1);
  copyingEnds(own, 2);
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_THAT(platform.dialogs.take(),
              ElementsAre(question("~/Downloads"), failure("The file could not be saved.")));
  EXPECT_TRUE(platform.fileSystem.fileExists(bundle));
  EXPECT_EQ(platform.application.terminateRequests(), 0);
  EXPECT_THAT(platform.childProcesses.detached(), IsEmpty());
}

TEST_F(UserInstallTest, olderCopyIsGoneAfterFailedCopy) {
  platform.fileSystem.add(shared);
  copyingEnds(shared, 1);
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_FALSE(platform.fileSystem.fileExists(shared));
  EXPECT_EQ(platform.childProcesses.runs({bundle, own}).size(), 1U);
}

TEST_F(UserInstallTest, failureDoesNotCountAsDecline) {
  copyingEnds(shared, 1);
  copyingEnds(own, 1);
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_FALSE(skips());
  platform.dialogs.take();
  EXPECT_FALSE(offer());
  EXPECT_EQ(platform.dialogs.take().at(0), question("~/Downloads"));
}

TEST_F(UserInstallTest, copierLaunchErrorIsReported) {
  platform.childProcesses.failAllLaunches({LaunchError::Stage::launch, "No such tool"});
  platform.dialogs.answer(0);
  EXPECT_FALSE(offer());
  EXPECT_EQ(platform.dialogs.take().back(), failure("No such tool"));
}

TEST_F(UserInstallTest, quarantineThatCannotBeRemovedIsIgnored) {
  platform.childProcesses.script({"-dr", "com.apple.quarantine", shared}, ToolResult{"", 1});
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
}

TEST_F(UserInstallTest, quarantineToolLaunchErrorIsIgnored) {
  platform.childProcesses.failLaunches({"-dr", "com.apple.quarantine", shared},
                                       {LaunchError::Stage::launch, "No such tool"});
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
}

TEST_F(UserInstallTest, shellLaunchErrorIsIgnored) {
  platform.childProcesses.failLaunches({"-c", "sleep 0.5; /usr/bin/open \"" + shared + "\""},
                                       {LaunchError::Stage::launch, "No shell"});
  platform.dialogs.answer(0);
  EXPECT_TRUE(offer());
  EXPECT_EQ(platform.application.terminateRequests(), 1);
}

} // namespace
} // namespace driftmark::test
