// A user restarts the daemon when synchronisation has stalled.

#include "desktop/BrctlScript.h"
#include "desktop/Session.h"
#include "harness/Waiting.h"

#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using icloud::MenuEntry;
using icloud::Window;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* offer = "Restart iCloud Sync…  —  no progress for 0 min";

class DaemonRestart : public testing::Test {
protected:
  DaemonRestart() {
    session_.setVariable("QT_QPA_PLATFORM", "offscreen");
    session_.setVariable("DRIFTMARK_STALL_SECS", "1");
    session_.installTools();
  }

  /// Starts the program and waits until it has noticed the stall.
  void awaitStall() {
    program_.emplace(session_.start());
    driver_.emplace(session_.awaitDriver());
    program_->log.readUntil("state -> attention\n");
  }

  Window openMenu() {
    driver_->click("MenuBarStrip");
    return driver_->awaitMenu();
  }

  /// Chooses the offer in the menu and answers the question that follows.
  void answer(const std::string& button) {
    openMenu();
    driver_->choose(offer);
    const Window alert = driver_->awaitAlert();
    EXPECT_EQ(alert.texts.front(), "Restart iCloud Sync?");
    EXPECT_TRUE(alert.texts.back().starts_with("1 transfer has made no progress for a while. "));
    EXPECT_THAT(alert.buttonTitles(), ElementsAre("Restart Sync", "Cancel"));
    driver_->press(button);
  }

  void expectOrderlyEnd() {
    program_->process.signal(SIGTERM);
    EXPECT_EQ(awaitEnd(program_->process), "status 0");
  }

  Session session_;
  std::optional<RunningProgram> program_;
  std::optional<icloud::UiDriver> driver_;
};

TEST_F(DaemonRestart, restartResumesStalledTransfer) {
  const fs::path scenario = session_.folder() / "scenario";
  std::ofstream(scenario) << "file \"Film.mov\" 5MB remote\n"
                             "at 0s download \"Film.mov\" over 1s stalled at 40% for 10m\n"
                             "at 20m end\n";
  Channel daemonLog = Channel::pipe();
  icloud::Launch launch{
      session_.root() / "sbin/launchd",
      {"--home", session_.home(), "--scenario", scenario, "--begin-after", "items"},
      {}};
  launch.output = launch.error = daemonLog.childEnd();
  icloud::ChildProcess supervisor(launch);
  daemonLog.closeChildEnd();
  daemonLog.readUntil(" ready\n");

  awaitStall();
  answer("Restart Sync");
  program_->log.readUntil("Driftmark: restarting iCloud sync daemon (killall bird)\n");
  daemonLog.readUntil(" resumed\n");
  daemonLog.readUntil("\" is finished\n");
  const std::string& log = program_->log.readUntil("Driftmark: synced Film.mov (download)\n");
  EXPECT_THAT(log, Not(HasSubstr("killall bird failed")));
  EXPECT_THAT(log, Not(HasSubstr("killall bird exited")));
  expectOrderlyEnd();
}

/// The upload of an existing file stalls, and no daemon runs.
class DaemonRestartWithoutDaemon : public DaemonRestart {
protected:
  DaemonRestartWithoutDaemon() {
    session_.writeTool("/usr/bin/brctl", brctlUploading("a.txt", "45"));
    const fs::path drive = session_.home() / "Library/Mobile Documents/com~apple~CloudDocs";
    fs::create_directories(drive);
    std::ofstream(drive / "a.txt") << "a";
  }

  void expectUploading() {
    const std::string& log = program_->log.readUntil("state -> uploading\n", 2);
    EXPECT_THAT(log, HasSubstr("state -> attention\n"
                               "Driftmark: restarting iCloud sync daemon (killall bird)\n"));
    for (const MenuEntry& entry : openMenu().entries)
      EXPECT_THAT(entry.text, Not(HasSubstr("Restart iCloud Sync")));
    expectOrderlyEnd();
  }
};

TEST_F(DaemonRestartWithoutDaemon, missingDaemonIsLogged) {
  awaitStall();
  answer("Cancel");
  answer("Restart Sync");
  program_->log.readUntil("Driftmark: killall bird exited 1\n");
  expectUploading();
}

TEST_F(DaemonRestartWithoutDaemon, missingKillallIsLogged) {
  fs::remove(session_.root() / "usr/bin/killall");
  awaitStall();
  answer("Restart Sync");
  program_->log.readUntil("Driftmark: killall bird failed: No such file or directory\n");
  expectUploading();
}

} // namespace
} // namespace driftmark::test
