// The program moves itself to an Applications folder.

#include "harness/TemporaryFolder.h"
#include "harness/Tree.h"
#include "harness/Waiting.h"
#include "harness/ui/ProgramUi.h"
#include "update/TestMachine.h"

#include <csignal>
#include <fstream>
#include <future>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string question = "Move Driftmark to your Applications folder?";
const std::vector<std::string> moveButtons{"Move and Reopen", "Not Now"};

std::string explained(const std::string& location) {
  return "Driftmark is running from " + location +
         ". It will move itself to your Applications folder and reopen. That needs no "
         "administrator password, and the copy you downloaded goes to the Trash.";
}

class MoveToApplications : public testing::Test {
protected:
  /// Agrees to the move. Waits for the end of the old copy and for the UI driver of the new one.
  icloud::UiDriver move(RunningCopy& copy) {
    copy.driver.press("Move and Reopen");
    copy.driver.awaitEnd();
    EXPECT_EQ(awaitExit(copy.process), 0);
    return machine_.awaitOpenedCopy();
  }

  /// Ends the opened copy and checks that no other process is left.
  static void end(icloud::UiDriver& opened) {
    quit(opened);
    EXPECT_EQ(TestMachine::awaitEndOf(opened.process()), 0);
    EXPECT_THAT(TestMachine::awaitEndOfEverything(), IsEmpty());
  }

  static void expectRunsFrom(icloud::UiDriver& driver, const fs::path& bundle) {
    EXPECT_EQ(driver.program(), bundle / "Contents/MacOS/Driftmark");
    expectStarted(driver);
  }

  void forbidApplications() {
    machine_.useUnprivilegedUser();
    fs::permissions(machine_.applications(), fs::perms::owner_read | fs::perms::owner_exec |
                                                 fs::perms::others_read | fs::perms::others_exec);
  }

  /// Agrees to a move that cannot be done, and checks that nothing has changed.
  void expectNothingMoved(const fs::path& bundle) {
    const Tree before = treeAt(bundle);
    RunningCopy copy = machine_.start(bundle);
    copy.driver.awaitAlert();
    copy.driver.press("Move and Reopen");
    const icloud::Window alert = awaitAlert(copy.driver, "Could not move Driftmark");
    EXPECT_THAT(alert.texts.back(), HasSubstr("(The file couldn’t be saved.)"));
    copy.driver.press("OK");
    expectStarted(copy.driver);
    EXPECT_EQ(treeAt(bundle), before);
    EXPECT_FALSE(fs::exists(machine_.trash()));
    quit(copy.driver);
    EXPECT_EQ(awaitExit(copy.process), 0);
  }

  fs::path downloads() const { return machine_.home() / "Downloads"; }
  fs::path installed() const { return machine_.applications() / "Driftmark.app"; }
  fs::path installedAtHome() const { return machine_.home() / "Applications/Driftmark.app"; }

  TestMachine machine_;
};

TEST_F(MoveToApplications, programMovesFromDownloads) {
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  const Tree asDownloaded = treeAt(bundle);
  const std::string executable = bundle / "Contents/MacOS/Driftmark";
  const std::vector<std::string> mark{"-w", "com.apple.quarantine", "0081;web", executable};
  ASSERT_EQ(machine_.run(machine_.tool("xattr"), mark).exitStatus, 0);

  RunningCopy copy = machine_.start(bundle);
  expectAlert(copy.driver, question, explained("~/Downloads"), moveButtons);
  icloud::UiDriver opened = move(copy);

  expectRunsFrom(opened, installed());
  EXPECT_EQ(treeAt(installed()), asDownloaded);
  EXPECT_EQ(treeAt(machine_.trash() / "Driftmark.app"), asDownloaded);
  EXPECT_FALSE(fs::exists(bundle));
  const Finished marks =
      machine_.run(machine_.tool("xattr"), {"-l", installed() / "Contents/MacOS/Driftmark"});
  EXPECT_THAT(marks.output, Not(HasSubstr("com.apple.quarantine")));
  end(opened);
}

TEST_F(MoveToApplications, translocatedBundleIsCopiedNotTrashed) {
  const fs::path bundle =
      machine_.placeBundle(machine_.folder() / "private/AppTranslocation/5D1E/d", "1.0");
  const Tree translocated = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  expectAlert(copy.driver, question, explained("a temporary location"), moveButtons);
  icloud::UiDriver opened = move(copy);
  expectRunsFrom(opened, installed());
  EXPECT_EQ(treeAt(bundle), translocated);
  EXPECT_FALSE(fs::exists(machine_.trash()));
  end(opened);
}

TEST_F(MoveToApplications, homeFolderIsUsedWhenSystemFolderIsNotWritable) {
  forbidApplications();
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  machine_.giveToUser(downloads());
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  expectAlert(copy.driver, question, explained("~/Downloads"), moveButtons);
  icloud::UiDriver opened = move(copy);
  expectRunsFrom(opened, installedAtHome());
  EXPECT_EQ(treeAt(installedAtHome()), asDownloaded);
  EXPECT_EQ(treeAt(machine_.trash() / "Driftmark.app"), asDownloaded);
  EXPECT_THAT(treeAt(machine_.applications()), testing::SizeIs(1));
  end(opened);
}

TEST_F(MoveToApplications, olderCopyIsReplacedWhole) {
  const fs::path older = machine_.placeBundle(machine_.applications(), "0.9");
  std::ofstream(older / "Contents/only in the older one") << "x";
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  icloud::UiDriver opened = move(copy);
  expectRunsFrom(opened, installed());
  EXPECT_EQ(treeAt(installed()), asDownloaded);
  end(opened);
}

TEST_F(MoveToApplications, linkInPlaceOfOlderCopyIsRemovedNotFollowed) {
  const fs::path documents = machine_.home() / "Documents";
  fs::create_directories(documents);
  std::ofstream(documents / "thesis.txt") << "ten years";
  const Tree before = treeAt(documents);
  fs::create_directory_symlink(documents, installed());
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  icloud::UiDriver opened = move(copy);
  expectRunsFrom(opened, installed());
  EXPECT_EQ(treeAt(installed()), asDownloaded);
  EXPECT_EQ(treeAt(documents), before);
  end(opened);
}

TEST_F(MoveToApplications, linkToNothingInPlaceOfOlderCopyIsRemoved) {
  fs::create_directory_symlink(machine_.home() / "Away", installed());
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  icloud::UiDriver opened = move(copy);
  expectRunsFrom(opened, installed());
  EXPECT_EQ(treeAt(installed()), asDownloaded);
  EXPECT_FALSE(fs::exists(machine_.home() / "Away"));
  end(opened);
}

TEST_F(MoveToApplications, onlyCopyInLinkedApplicationsFolderStays) {
  forbidApplications();
  const fs::path disk = machine_.folder() / "a disk";
  const fs::path bundle = machine_.placeBundle(disk, "1.0");
  machine_.giveToUser(disk);
  fs::create_directory_symlink(disk, machine_.home() / "Applications");
  expectNothingMoved(bundle);
}

TEST_F(MoveToApplications, onlyCopyInLinkedHomeStays) {
  forbidApplications();
  const fs::path bundle = machine_.placeBundle(machine_.home() / "Applications", "1.0");
  machine_.giveToUser(machine_.home());
  fs::create_directory_symlink(machine_.home(), machine_.folder() / "linked home");
  machine_.setVariable("HOME", machine_.folder() / "linked home");
  expectNothingMoved(bundle);
}

TEST_F(MoveToApplications, olderCopyStaysWhenRunningBundleWasEmptied) {
  const fs::path older = machine_.placeBundle(machine_.applications(), "0.9");
  const Tree asInstalled = treeAt(older);
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  fs::remove_all(bundle / "Contents");
  copy.driver.press("Move and Reopen");
  awaitAlert(copy.driver, "Could not move Driftmark");
  EXPECT_EQ(treeAt(older), asInstalled);
}

TEST_F(MoveToApplications, executableOutsideBundleGetsNoOffer) {
  machine_.placeExecutable(downloads());
  RunningCopy copy = machine_.start(downloads());
  expectStarted(copy.driver);
  EXPECT_FALSE(fs::exists(installed()));
}

TEST_F(MoveToApplications, declinedOfferIsNotRepeated) {
  machine_.writeSettings(R"({"theUsersOwn": [1, 2]})");
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  {
    RunningCopy copy = machine_.start(bundle);
    copy.driver.awaitAlert();
    copy.driver.press("Not Now");
    expectStarted(copy.driver);
    EXPECT_THAT(machine_.settings(), HasSubstr("\"skipUserApplicationsInstall\": true"));
    EXPECT_THAT(machine_.settings(), HasSubstr("theUsersOwn"));
    quit(copy.driver);
    EXPECT_EQ(awaitExit(copy.process), 0);
  }
  for (const fs::path& place : {bundle, machine_.placeBundle(machine_.home() / "Desktop", "1.1")}) {
    RunningCopy copy = machine_.start(place);
    expectStarted(copy.driver);
    quit(copy.driver);
    EXPECT_EQ(awaitExit(copy.process), 0);
  }
  EXPECT_FALSE(fs::exists(installed()));
}

TEST_F(MoveToApplications, closedOfferIsDeclined) {
  RunningCopy copy = machine_.start(machine_.placeBundle(downloads(), "1.0"));
  copy.driver.awaitAlert();
  copy.driver.key("Escape");
  expectStarted(copy.driver);
  EXPECT_THAT(machine_.settings(), HasSubstr("\"skipUserApplicationsInstall\": true"));
}

TEST_F(MoveToApplications, returnKeyAgrees) {
  RunningCopy copy = machine_.start(machine_.placeBundle(downloads(), "1.0"));
  copy.driver.awaitAlert();
  copy.driver.key("Return");
  copy.driver.awaitEnd();
  icloud::UiDriver opened = machine_.awaitOpenedCopy();
  expectRunsFrom(opened, installed());
}

TEST_F(MoveToApplications, offerNamesOtherFolder) {
  const fs::path elsewhere = machine_.folder() / "a disk";
  RunningCopy copy = machine_.start(machine_.placeBundle(elsewhere, "1.0"));
  expectAlert(copy.driver, question, explained(elsewhere), moveButtons);
}

TEST_F(MoveToApplications, subfolderOfApplicationsGetsTheOffer) {
  RunningCopy copy =
      machine_.start(machine_.placeBundle(machine_.applications() / "Utilities", "1.0"));
  expectAlert(copy.driver, question, explained("/Applications/Utilities"), moveButtons);
}

TEST_F(MoveToApplications, installedProgramGetsNoOffer) {
  for (const fs::path& folder : {machine_.applications(), machine_.home() / "Applications"}) {
    RunningCopy copy = machine_.start(machine_.placeBundle(folder, "1.0"));
    expectStarted(copy.driver);
    quit(copy.driver);
    EXPECT_EQ(awaitExit(copy.process), 0);
  }
}

TEST_F(MoveToApplications, failedMoveIsReportedAndProgramContinues) {
  forbidApplications();
  std::ofstream(machine_.home() / "Applications") << "not a folder";
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  machine_.giveToUser(machine_.home());
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  copy.driver.press("Move and Reopen");
  expectAlert(copy.driver, "Could not move Driftmark",
              "Drag Driftmark.app into your Applications folder in Finder, then open it "
              "again.\n\n(The file couldn’t be saved.)");
  copy.driver.press("OK");
  expectStarted(copy.driver);
  EXPECT_EQ(treeAt(bundle), asDownloaded);
  EXPECT_FALSE(fs::exists(machine_.trash()));
  EXPECT_THAT(machine_.settings(), Not(HasSubstr("skipUserApplicationsInstall")));
}

TEST_F(MoveToApplications, olderCopyThatCannotBeRemovedIsReported) {
  forbidApplications();
  const fs::path atHome = machine_.home() / "Applications";
  const fs::path older = machine_.placeBundle(atHome, "0.9");
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  machine_.giveToUser(machine_.home());
  fs::permissions(atHome, fs::perms::owner_read | fs::perms::owner_exec);
  const Tree asInstalled = treeAt(older);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  copy.driver.press("Move and Reopen");
  const icloud::Window alert = awaitAlert(copy.driver, "Could not move Driftmark");
  EXPECT_THAT(alert.texts.back(), HasSubstr("Driftmark.app"));
  EXPECT_THAT(alert.texts.back(), HasSubstr("Permission denied)"));
  EXPECT_EQ(treeAt(older), asInstalled);
  copy.driver.press("OK");
  expectStarted(copy.driver);
}

TEST_F(MoveToApplications, secondInstanceTakesOfferOver) {
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  RunningCopy first = machine_.start(bundle);
  first.driver.awaitAlert();
  auto end = std::async(std::launch::async, [&] { return awaitExit(first.process); });
  RunningCopy second = machine_.start(bundle);
  EXPECT_EQ(end.get(), 0);
  expectAlert(second.driver, question, explained("~/Downloads"), moveButtons);
  second.log.readUntil("Driftmark: quitting 1 already-running instance(s)\n");
}

TEST_F(MoveToApplications, signalDuringOfferEndsProgramWithoutMove) {
  const fs::path bundle = machine_.placeBundle(downloads(), "1.0");
  const Tree asDownloaded = treeAt(bundle);
  RunningCopy copy = machine_.start(bundle);
  copy.driver.awaitAlert();
  copy.process.signal(SIGTERM);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_EQ(treeAt(bundle), asDownloaded);
  EXPECT_FALSE(fs::exists(installed()));
  EXPECT_THAT(machine_.settings(), Not(HasSubstr("skipUserApplicationsInstall")));
}

/// The first state is logged when the interface starts.
TEST_F(MoveToApplications, signalDuringOfferStartsNothing) {
  RunningCopy copy = machine_.start(machine_.placeBundle(downloads(), "1.0"));
  copy.driver.awaitAlert();
  copy.process.signal(SIGTERM);
  copy.driver.awaitEnd();
  EXPECT_EQ(awaitExit(copy.process), 0);
  EXPECT_THAT(copy.log.readToEnd(), Not(HasSubstr("state -> ")));
}

} // namespace
} // namespace driftmark::test
