// Several instances of the program: the newest one remains.

#include "desktop/Session.h"
#include "harness/BuiltFiles.h"
#include "harness/Waiting.h"
#include "process/Pipe.h"

#include <array>
#include <csignal>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

namespace driftmark::test {
namespace {

namespace fs = std::filesystem;
using icloud::ChildProcess;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds gracePeriod{3};

/// Makes a hard link where possible, since the program is large.
void copyProgram(const fs::path& from, const fs::path& to) {
  std::error_code acrossVolumes;
  fs::create_hard_link(from, to, acrossVolumes);
  if (acrossVolumes)
    fs::copy_file(from, to);
}

class Instances : public testing::Test {
protected:
  Instances() {
    session_.writeTool("/usr/bin/brctl", execChildTool("wait"));
    // Without this the program first reports that it has no display.
    session_.setVariable("QT_QPA_PLATFORM", "offscreen");
  }

  /// Makes a bundle whose identifier belongs to this test. Returns the path of its executable.
  fs::path bundle(const std::string& name, const fs::path& program = driftmarkProgram()) const {
    const fs::path contents = session_.folder() / name / "Contents";
    const fs::path executable = contents / "MacOS" / program.filename();
    fs::create_directories(executable.parent_path());
    std::ofstream(contents / "Info.plist")
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
           "<key>CFBundleIdentifier</key><string>com.example.desktop"
        << getpid() << "</string></dict></plist>\n";
    copyProgram(program, executable);
    return executable;
  }

  /// Starts an instance and waits until it has started up.
  RunningProgram startAndAwait(const fs::path& executable) {
    RunningProgram copy = session_.start(executable);
    awaitStarted(copy);
    return copy;
  }

  static void awaitStarted(RunningProgram& copy) { copy.log.readUntil("brctl monitor -g started"); }

  /// Starts a tool with the same bundle identifier that ignores SIGTERM.
  RunningProgram startUnresponsive() {
    const fs::path tool = bundle("Unresponsive.app", childToolPath());
    RunningProgram unresponsive = session_.start(
        "/bin/sh", {"-c", "exec '" + tool.string() + "' ignore-terminate print up wait >&2"});
    unresponsive.log.readUntil("up");
    return unresponsive;
  }

  /// Reaps the instances as they end, until only the last one runs. Returns false when the last one
  /// ends or `maxWait` is over first.
  static bool awaitOnlyTheLast(std::vector<RunningProgram>& copies) {
    const auto deadline = Clock::now() + maxWait;
    std::vector<pollfd> exits;
    for (const RunningProgram& copy : copies)
      exits.push_back({copy.process.exitDescriptor(), POLLIN, 0});
    for (std::size_t left = copies.size(); left > 1;) {
      const auto time =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      if (time.count() <= 0 ||
          poll(exits.data(), exits.size(), static_cast<int>(time.count())) < 1 ||
          exits.back().revents != 0)
        return false;
      for (std::size_t i = 0; i < copies.size(); ++i)
        if (exits[i].revents != 0) {
          awaitExit(copies[i].process);
          exits[i].fd = -1;
          --left;
        }
    }
    return true;
  }

  /// Before its start-up is complete, SIGTERM ends an instance at once.
  static void expectOrderlyOrEarlyEnd(RunningProgram& copy) {
    const int status = awaitExit(copy.process);
    if (WIFSIGNALED(status))
      EXPECT_EQ(WTERMSIG(status), SIGTERM);
    else
      EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_THAT(copy.log.readToEnd(), Not(HasSubstr("ignored the quit request")));
  }

  void expectOrderlyEnd(RunningProgram& copy) {
    copy.process.signal(SIGTERM);
    EXPECT_EQ(awaitEnd(copy.process), "status 0");
    EXPECT_THAT(session_.killLeftovers(), IsEmpty());
  }

  Session session_;
};

TEST_F(Instances, onlyInstanceQuitsNoOther) {
  RunningProgram only = startAndAwait(bundle("Only.app"));
  expectOrderlyEnd(only);
  EXPECT_TRUE(only.log.readToEnd().starts_with("Driftmark: state -> idle\n"));
}

TEST_F(Instances, newInstanceEndsOlderOne) {
  RunningProgram older = startAndAwait(bundle("Older.app"));
  RunningProgram newer = session_.start(bundle("elsewhere/Newer.app"));
  EXPECT_EQ(awaitEnd(older.process), "status 0");
  EXPECT_THAT(older.log.readToEnd(), Not(HasSubstr("instance")));
  awaitStarted(newer);
  EXPECT_TRUE(newer.log.readSoFar().starts_with(
      "Driftmark: quitting 1 already-running instance(s)\nDriftmark: state -> idle\n"));
  EXPECT_THAT(newer.log.readSoFar(), Not(HasSubstr("ignored")));
  // Only the new instance has children now.
  EXPECT_THAT(session_.killLeftovers({newer.process.identifier()}), IsEmpty());
  expectOrderlyEnd(newer);
}

TEST_F(Instances, olderInstanceWithDeletedBundleIsEnded) {
  RunningProgram older = startAndAwait(bundle("Older.app"));
  fs::remove_all(session_.folder() / "Older.app");
  RunningProgram newer = startAndAwait(bundle("Newer.app"));
  EXPECT_TRUE(
      newer.log.readSoFar().starts_with("Driftmark: quitting 1 already-running instance(s)\n"));
  EXPECT_EQ(awaitEnd(older.process), "status 0");
  expectOrderlyEnd(newer);
}

class ManyInstances : public Instances, public testing::WithParamInterface<int> {};

TEST_P(ManyInstances, newestOfSimultaneousInstancesRemains) {
  std::vector<fs::path> executables;
  for (int i = 0; i < GetParam(); ++i)
    executables.push_back(bundle("Copy " + std::to_string(i) + ".app"));
  std::vector<RunningProgram> copies;
  copies.reserve(executables.size());
  for (const fs::path& executable : executables)
    copies.push_back(session_.start(executable));
  ASSERT_TRUE(awaitOnlyTheLast(copies));
  RunningProgram& newest = copies.back();
  awaitStarted(newest);
  for (RunningProgram& copy : copies)
    if (&copy != &newest)
      expectOrderlyOrEarlyEnd(copy);
  EXPECT_THAT(newest.log.readSoFar(), HasSubstr(" already-running instance(s)\n"));
  EXPECT_THAT(newest.log.readSoFar(), Not(HasSubstr("ignored")));
  EXPECT_THAT(session_.killLeftovers({newest.process.identifier()}), IsEmpty());
  expectOrderlyEnd(newest);
}

INSTANTIATE_TEST_SUITE_P(Sizes, ManyInstances, testing::Values(2, 3, 10));

TEST_F(Instances, unresponsiveInstanceIsKilled) {
  RunningProgram unresponsive = startUnresponsive();
  RunningProgram newer = session_.start(bundle("Newer.app"));
  newer.log.readUntil("quitting 1 already-running instance(s)\n");
  const auto asked = Clock::now();
  const std::string complaint = "Driftmark: instance " +
                                std::to_string(unresponsive.process.identifier()) +
                                " ignored the quit request; killing it\n";
  newer.log.readUntil(complaint);
  // The test reads both lines with a delay.
  EXPECT_GT(Clock::now() - asked, gracePeriod - std::chrono::milliseconds(500));
  EXPECT_EQ(awaitEnd(unresponsive.process), "signal 9 (Killed)");
  awaitStarted(newer);
  EXPECT_EQ(newer.log.readSoFar().find(complaint), newer.log.readSoFar().rfind(complaint));
  expectOrderlyEnd(newer);
}

TEST_F(Instances, otherUsersCopyIsSurvived) {
  if (getuid() != 0)
    GTEST_SKIP() << "only root can start programs of another user";
  session_.giveTo(otherUser);
  RunningProgram older = startUnresponsive();
  RunningProgram newer = session_.start(bundle("Newer.app"), {}, otherUser);
  awaitStarted(newer);
  EXPECT_FALSE(icloud::isReadableWithin(older.process.exitDescriptor(), {}));
  newer.process.signal(SIGTERM);
  EXPECT_EQ(awaitEnd(newer.process), "status 0");
  EXPECT_THAT(session_.killLeftovers({older.process.identifier()}), IsEmpty());
}

} // namespace
} // namespace driftmark::test
