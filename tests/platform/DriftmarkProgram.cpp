// The program as a process: what it logs, how it ends, and what it leaves behind.

#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/Orphans.h"
#include "harness/RunningProgram.h"
#include "harness/TemporaryFolder.h"

#include <csignal>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {
namespace {

/// The program below a system root of its own.
class DriftmarkProgram : public testing::Test {
protected:
  ~DriftmarkProgram() override {
    program_.reset();
    for (const int child : Orphans::children())
      Orphans::end(child);
  }

  /// Installs a `brctl` in the system root that runs these shell commands.
  void setBrctl(const std::string& commands) { root_.writeScript("usr/bin/brctl", commands); }

  void start(const std::string& executable = driftmarkProgram()) {
    const ScopedVariable root("DRIFTMARK_SYSTEM_ROOT", rootVariable_);
    const ScopedVariable home("HOME", root_.path("home"));
    const ScopedVariable configuration("XDG_CONFIG_HOME", std::nullopt);
    // Nobody would answer the offer to move.
    root_.write("home/.config/driftmark/settings.json", R"({"skipUserApplicationsInstall": true})");
    program_.emplace(executable);
  }

  bool says(const std::string& text) { return program_->says(text); }
  void send(int signal) { program_->send(signal); }
  std::optional<int> exitStatus() { return program_->exitStatus(); }
  const std::string& errors() { return program_->errors(); }

  TemporaryFolder root_;
  std::optional<std::string> rootVariable_ = root_.path();
  Orphans orphans_;
  std::optional<RunningProgram> program_;
};

const std::string waitForever = execChildTool("wait");

TEST_F(DriftmarkProgram, stateAndMonitorsAreLoggedFirst) {
  setBrctl(waitForever);
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
  EXPECT_TRUE(
      errors().starts_with("Driftmark: state -> idle\nDriftmark: brctl monitor started (pid "))
      << errors();
}

TEST_F(DriftmarkProgram, eitherSignalEndsProgramAndChildren) {
  for (const int signal : {SIGTERM, SIGINT}) {
    setBrctl(waitForever);
    start();
    ASSERT_TRUE(says("brctl monitor -g started"));
    send(signal);
    EXPECT_EQ(exitStatus(), 0) << signal;
    EXPECT_TRUE(Orphans::children().empty()) << signal;
    EXPECT_EQ(errors().find("restarting"), std::string::npos) << errors();
  }
}

TEST_F(DriftmarkProgram, toolsThatIgnoreSigtermAreKilled) {
  setBrctl(execChildTool("ignore-terminate print ready wait"));
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  send(SIGTERM);
  send(SIGINT);
  EXPECT_EQ(exitStatus(), 0);
  EXPECT_TRUE(Orphans::children().empty());
}

TEST_F(DriftmarkProgram, programEndsWhileToolFloodsIt) {
  setBrctl(execChildTool("flood-forever"));
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
  EXPECT_TRUE(Orphans::children().empty());
}

TEST_F(DriftmarkProgram, stateChangesAreLogged) {
  setBrctl("case \"$*\" in *CloudDocs) exec " + childToolPath() +
           " print ' o /com~apple~CloudDocs/a.txt \u2191 45%\n' wait;; esac\n" +
           execChildTool("wait"));
  start();
  EXPECT_TRUE(says("Driftmark: uploading a.txt\nDriftmark: state -> uploading\n")) << errors();
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
}

TEST_F(DriftmarkProgram, programRunsWithoutDisplay) {
  const ScopedVariable platform("QT_QPA_PLATFORM", std::nullopt);
  const ScopedVariable display("DISPLAY", std::nullopt);
  const ScopedVariable wayland("WAYLAND_DISPLAY", "");
  setBrctl(waitForever);
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
}

TEST_F(DriftmarkProgram, programRunsWithoutBrctl) {
  start();
  ASSERT_TRUE(says("Driftmark: failed to launch brctl monitor -i com.apple.CloudDocs: "
                   "No such file or directory\n"));
  ASSERT_TRUE(says("Driftmark: failed to launch brctl monitor -g -i: No such file or directory\n"));
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
}

TEST_F(DriftmarkProgram, missingStandardDescriptorsAreOpened) {
  const std::string started = root_.makeFifo("started");
  setBrctl("echo > '" + started + "'\nexec " + childToolPath() + " wait");
  const std::string wrapper = root_.path("wrapper");
  root_.writeScript("wrapper", "exec " + driftmarkProgram() + " 0<&- 1>&- 2>&-");
  start(wrapper);
  std::ifstream(started).get();
  for (const char* const descriptor : {"0", "1", "2"})
    EXPECT_EQ(program_->descriptor(descriptor), "/dev/null");
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
}

TEST_F(DriftmarkProgram, unusableSystemRootIsRefused) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"", "is empty"},
      {"relative", "is not an absolute path: relative"},
      {"/missing/folder", "names a folder that does not exist: /missing/folder"},
      {"/dev/null", "does not name a folder: /dev/null"}};
  for (const auto& [value, fault] : cases) {
    rootVariable_ = value;
    start();
    EXPECT_EQ(exitStatus(), 2) << value;
    EXPECT_EQ(errors(), "driftmark: DRIFTMARK_SYSTEM_ROOT " + fault + "\n");
  }
}

TEST_F(DriftmarkProgram, plainLocaleCausesNoWarnings) {
  const ScopedVariable all("LC_ALL", "C");
  setBrctl(waitForever);
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
  EXPECT_TRUE(errors().starts_with("Driftmark: state -> idle\n")) << errors();
}

} // namespace
} // namespace driftmark::test
