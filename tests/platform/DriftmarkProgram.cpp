// The program as a process: what it logs, how it ends, and what it leaves behind.

#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/Orphans.h"
#include "harness/RunningProgram.h"
#include "harness/TemporaryFolder.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using testing::IsEmpty;

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

/// For killed processes to end.
constexpr std::chrono::seconds soon{10};

const std::string waitForever = execChildTool("wait");

/// Loading one takes two megabytes; only a title or a menu needs it.
TEST_F(DriftmarkProgram, idleProgramLoadsNoFont) {
  setBrctl("[ $1 != quota ] || exec echo 7 bytes of quota remaining in personal account\n" +
           waitForever);
  start();
  ASSERT_TRUE(says("quota remaining 7 bytes"));
  std::ifstream maps("/proc/" + std::to_string(program_->process.identifier()) + "/maps");
  bool draws = false;
  std::vector<std::string> fonts;
  for (std::string line; std::getline(maps, line);) {
    draws = draws || line.find("libQt6Gui") != std::string::npos;
    if (line.ends_with(".otf") || line.ends_with(".ttf") || line.ends_with(".ttc"))
      fonts.push_back(line);
  }
  EXPECT_TRUE(draws);
  EXPECT_THAT(fonts, IsEmpty());
}

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

TEST_F(DriftmarkProgram, programSaysThatItIsInvisibleWithoutDisplay) {
  const ScopedVariable platform("QT_QPA_PLATFORM", std::nullopt);
  const ScopedVariable display("DISPLAY", std::nullopt);
  const ScopedVariable wayland("WAYLAND_DISPLAY", "");
  setBrctl(waitForever);
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  EXPECT_TRUE(errors().starts_with("Driftmark: there is no display, so the program is invisible: "
                                   "DISPLAY and WAYLAND_DISPLAY are not set\n"))
      << errors();
  send(SIGTERM);
  EXPECT_EQ(exitStatus(), 0);
}

TEST_F(DriftmarkProgram, displayThatCannotBeOpenedIsNamed) {
  const std::string runtime = root_.path("run");
  const ScopedVariable folder("XDG_RUNTIME_DIR", runtime);
  const ScopedVariable platform("QT_QPA_PLATFORM", std::nullopt);
  const ScopedVariable wayland("WAYLAND_DISPLAY", std::nullopt);
  const ScopedVariable display("DISPLAY", ":no-such-display");
  start();
  EXPECT_EQ(exitStatus(), 3);
  EXPECT_EQ(errors(), "driftmark: the display cannot be opened: DISPLAY=:no-such-display\n");

  const ScopedVariable both("WAYLAND_DISPLAY", "no-such-display");
  start();
  EXPECT_EQ(exitStatus(), 3);
  EXPECT_EQ(errors(), "driftmark: the display cannot be opened: DISPLAY=:no-such-display, "
                      "WAYLAND_DISPLAY=no-such-display\n");

  const ScopedVariable chosen("QT_QPA_PLATFORM", "no-such-platform");
  start();
  EXPECT_EQ(exitStatus(), 3);
  EXPECT_EQ(errors(), "driftmark: the display cannot be opened: QT_QPA_PLATFORM=no-such-platform, "
                      "DISPLAY=:no-such-display, WAYLAND_DISPLAY=no-such-display\n");
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

/// Without a thread for terminals no monitor starts, and without one for background tasks no report
/// is read. Neither ends the program.
TEST_F(DriftmarkProgram, programRunsWithoutThreads) {
  for (const char* const maxThreads : {"0", "1", "2", "3", "4"}) {
    const ScopedVariable library("LD_PRELOAD", limitThreadsLibrary());
    const ScopedVariable options("ASAN_OPTIONS", "verify_asan_link_order=0");
    const ScopedVariable limit("MAX_THREADS", maxThreads);
    setBrctl(waitForever);
    start();
    ASSERT_TRUE(says("brctl monitor -g")) << maxThreads << errors();
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 0) << maxThreads << errors();
    EXPECT_TRUE(Orphans::endAll().empty()) << maxThreads;
  }
}

/// The limit counts every process of a user, so the program runs as a user who has no other.
TEST_F(DriftmarkProgram, userWithoutFurtherProcessesKeepsProgramRunning) {
  if (getuid() != 0)
    GTEST_SKIP() << "only root can start programs of another user";
  const ScopedVariable options("ASAN_OPTIONS", "detect_leaks=0"); // which needs a process
  setBrctl(waitForever);
  for (int maxProcesses = 1; maxProcesses <= 6; ++maxProcesses) {
    const std::string user = std::to_string(600'000'000 + getpid());
    root_.write("home/empty", "");
    std::string script = "user=" + user;
    script.append("\nchown -R $user '").append(root_.path().string());
    script.append("' && exec prlimit --nproc=").append(std::to_string(maxProcesses));
    script.append(" setpriv --reuid=$user --regid=$user --clear-groups ")
        .append(driftmarkProgram());
    root_.writeScript("wrapper", script);
    start(root_.path("wrapper"));
    ASSERT_TRUE(says("brctl monitor -g")) << maxProcesses << errors();
    send(SIGTERM);
    EXPECT_EQ(exitStatus(), 0) << maxProcesses << errors();
    EXPECT_TRUE(Orphans::endAll().empty()) << maxProcesses;
  }
}

TEST_F(DriftmarkProgram, crashLeavesNoTools) {
  setBrctl(execChildTool("ignore-terminate print ready wait"));
  for (const int signal : {SIGABRT, SIGSEGV}) {
    start();
    ASSERT_TRUE(says("brctl monitor -g started"));
    send(signal);
    EXPECT_NE(exitStatus(), 0) << signal;
    EXPECT_THAT(Orphans::endAll({}, soon), IsEmpty()) << signal;
  }
}

TEST_F(DriftmarkProgram, fatalErrorIsLoggedAndLeavesNoTools) {
  const std::string transfer = "Fraction completed: 0.5 / Completed: 7 of ";
  setBrctl("case \"$*\" in *-g*) exec " + childToolPath() + " print '" + transfer +
           "9223372036854775807\n" + transfer + "1\n' wait;; esac\n" + waitForever);
  start();
  EXPECT_TRUE(says("Driftmark: fatal error: the sizes of the global transfers exceed 64 bits\n"));
  EXPECT_NE(exitStatus(), 0);
  EXPECT_THAT(Orphans::endAll({}, soon), IsEmpty());
}

#ifndef DRIFTMARK_SANITIZED // whose memory has no such limit
TEST_F(DriftmarkProgram, uncaughtExceptionIsLoggedAndLeavesNoTools) {
  const std::string go = root_.makeFifo("go");
  setBrctl("case \"$*\" in *CloudDocs) read go < '" + go + "'; exec " + childToolPath() +
           " print-many 1000000000 x wait;; esac\n" + waitForever);
  start();
  ASSERT_TRUE(says("brctl monitor -g started"));
  program_->limitMemory(64 << 20);
  std::ofstream(go) << "go\n";
  EXPECT_TRUE(says("Driftmark: uncaught exception: std::bad_alloc\n"));
  EXPECT_NE(exitStatus(), 0);
  EXPECT_THAT(Orphans::endAll({}, soon), IsEmpty());
}
#endif

#ifndef DRIFTMARK_SANITIZED // which needs descriptors, too
/// With few descriptors the program cannot start, or cannot catch the signal, or cannot read its
/// settings and offers to move.
TEST_F(DriftmarkProgram, sigtermEndsProgramWithAnyNumberOfDescriptors) {
  setBrctl(waitForever);
  for (int maxDescriptors = 6; maxDescriptors < 30; ++maxDescriptors) {
    root_.writeScript("wrapper", "ulimit -n " + std::to_string(maxDescriptors) + "\nexec " +
                                     driftmarkProgram());
    start(root_.path("wrapper"));
    static_cast<void>(says("Driftmark: "));
    send(SIGTERM);
    static_cast<void>(exitStatus());
    EXPECT_THAT(Orphans::endAll({}, soon), IsEmpty()) << maxDescriptors;
  }
}
#endif

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
