// What a child on a terminal inherits, and how its output and its exit arrive.

#include "ChildProcessesTest.h"
#include "ScopedVariable.h"
#include "harness/BuiltFiles.h"
#include "harness/TemporaryFolder.h"
#include "harness/qt/EventLoop.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace driftmark::test {
namespace {

using namespace std::string_literals;

class TerminalChildren : public ChildProcessesTest {};

TEST_F(TerminalChildren, outputAndErrorOutputAreATerminalAndInputIsNot) {
  EXPECT_EQ(outputOf({"print-terminals"}), "other terminal terminal ");
}

TEST_F(TerminalChildren, terminalKeepsItsDefaultModeAndHasNoSize) {
  EXPECT_EQ(outputOf({"print-terminal-mode"}), "CR LF 0x0");
}

TEST_F(TerminalChildren, lineEndsBecomeCarriageReturnAndLineFeed) {
  EXPECT_EQ(outputOf({"print", "one\ntwo\n\nthree"}), "one\r\ntwo\r\n\r\nthree");
}

TEST_F(TerminalChildren, childStaysInTheSessionAndProcessGroupOfThisProcess) {
  EXPECT_EQ(outputOf({"print-session"}),
            std::to_string(getsid(0)) + " " + std::to_string(getpgrp()));
}

TEST_F(TerminalChildren, environmentIsInherited) {
  const ScopedVariable variable("DRIFTMARK_CHILD_TEST", "a value = kept");
  EXPECT_EQ(outputOf({"print-variable", "DRIFTMARK_CHILD_TEST"}), "a value = kept");
}

TEST_F(TerminalChildren, workingFolderIsInherited) {
  EXPECT_EQ(outputOf({"print-folder"}), std::filesystem::current_path().string());
}

TEST_F(TerminalChildren, signalsAreResetWhateverThisProcessDoesWithThem) {
  const auto terminate = std::signal(SIGTERM, SIG_IGN);
  const auto interrupt = std::signal(SIGINT, SIG_IGN);
  const auto brokenPipe = std::signal(SIGPIPE, SIG_IGN);
  sigset_t blocked{};
  sigset_t before{};
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  sigaddset(&blocked, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  EXPECT_EQ(outputOf({"print-signals"}), "");
  EXPECT_EQ(run({"print-signals"}).output, "");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  std::signal(SIGTERM, terminate);
  std::signal(SIGINT, interrupt);
  std::signal(SIGPIPE, brokenPipe);
}

TEST_F(TerminalChildren, noDescriptorIsInheritedBeyondTheStandardOnes) {
  std::vector<FileDescriptor> extra;
  for (int count = 0; count < 20; ++count)
    extra.emplace_back(open("/dev/null", O_RDONLY)); // NOLINT(android-cloexec-open)
  const Tool running = spawn({"wait"});
  EXPECT_EQ(outputOf({"print-descriptors"}).size(), "0 1 2 "s.size());
  EXPECT_EQ(run({"print-descriptors"}).output.size(), "0 1 2 "s.size());
}

TEST_F(TerminalChildren, toolsAreFoundBelowTheSystemRoot) {
  const TemporaryFolder root;
  std::filesystem::create_directories(root.path("usr/bin"));
  std::filesystem::create_symlink(childToolPath(), root.path("usr/bin/tool"));
  for (const std::string& path : {root.path().string(), root.path().string() + "/"}) {
    PosixChildProcesses below(mainQueue_, path);
    const auto result =
        below.prepare({"/usr/bin/tool", {"print", "found"}}, ToolOutput::capture)->run();
    ASSERT_TRUE(std::holds_alternative<ToolResult>(result)) << path;
    EXPECT_EQ(std::get<ToolResult>(result).output, "found");
  }
}

TEST_F(TerminalChildren, slashAsSystemRootMeansNone) {
  PosixChildProcesses below(mainQueue_, "/");
  const auto result = below.prepare(childTool({"print", "x"}), ToolOutput::capture)->run();
  EXPECT_TRUE(std::holds_alternative<ToolResult>(result));
}

TEST_F(TerminalChildren, toolThatCannotBeStartedFailsInTheSystemsWords) {
  const TemporaryFolder folder;
  folder.write("forbidden", "#!/bin/sh\n");
  folder.write("garbage", "\x7f\x7f not a program");
  std::filesystem::permissions(folder.path("garbage"), std::filesystem::perms::owner_all);
  const std::vector<std::pair<std::string, std::string>> expected{
      {folder.path("missing"), "No such file or directory"},
      {folder.path("forbidden"), "Permission denied"},
      {folder.path(), "Permission denied"},
      {folder.path("garbage"), "Exec format error"},
      {folder.path("forbidden/below"), "Not a directory"}};
  for (const auto& [path, description] : expected) {
    const LaunchError error = failedSpawn({path, {}});
    EXPECT_EQ(error.stage, LaunchError::Stage::launch) << path;
    EXPECT_EQ(error.description, description) << path;
  }
  EXPECT_FALSE(hasChildren());
}

TEST_F(TerminalChildren, toolThatExitsAtOnceIsReportedEachTime) {
  for (int time = 0; time < 100; ++time) {
    const Tool tool = spawn({});
    ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
    EXPECT_EQ(tool->output, "");
  }
}

TEST_F(TerminalChildren, veryLongLineArrivesWhole) {
  const std::string output = outputOf({"print-many", "2097152", "x"});
  EXPECT_TRUE(output == std::string(2097152, 'x')) << output.size();
}

TEST_F(TerminalChildren, bytesThatAreNoTextArriveUnchanged) {
  EXPECT_EQ(outputOf({"print-bytes", "00ff80c30d0d1b5b306d0d41"}), "\0\xff\x80\xc3\r\r\x1b[0m\rA"s);
}

TEST_F(TerminalChildren, partialLineOfKilledChildArrives) {
  const Tool tool = spawn({"print", "whole\nhal", "raise", std::to_string(SIGKILL)});
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_EQ(tool->outputAtExit, "whole\r\nhal");
}

TEST_F(TerminalChildren, endOfOutputIsNotTheEndOfTheChild) {
  const Tool tool = spawn({"print", "last", "close-output", "wait"});
  ASSERT_TRUE(runUntil([&] { return tool->output == "last"; }));
  EXPECT_TRUE(tool->child.process->isRunning());
  EXPECT_EQ(tool->exits, 0);
  tool->child.process->terminate();
  EXPECT_TRUE(runUntil([&] { return tool->exits == 1; }));
}

TEST_F(TerminalChildren, otherProcessOnTheTerminalDoesNotDelayTheExit) {
  const Tool tool = spawn({"fork-holder", "print", "last words"});
  const int holder = identifierFrom(tool);
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_TRUE(tool->outputAtExit.ends_with("\r\nlast words"));
  EXPECT_EQ(kill(holder, SIGKILL), 0) << "the other process should still run";
}

TEST_F(TerminalChildren, otherProcessThatFloodsTheTerminalDoesNotDelayTheExit) {
  std::size_t received = 0;
  std::string start;
  const Tool tool = spawn({"fork-flooder"}, [&](std::string_view bytes) {
    received += bytes.size();
    start.append(bytes.substr(0, 32 - std::min<std::size_t>(32, start.size())));
  });
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  const std::size_t atExit = received;
  EXPECT_TRUE(runUntil([&] { return received > atExit + 1'000'000; }))
      << "its output should still be read";
  tool->child.masterHandle.reset();
  const std::size_t atRelease = received;
  runFor(Seconds(0.02));
  EXPECT_EQ(received, atRelease);
}

TEST_F(TerminalChildren, releasedTerminalIsClosedForAChildThatFloods) {
  std::size_t received = 0;
  const Tool tool =
      spawn({"flood-forever"}, [&](std::string_view bytes) { received += bytes.size(); });
  ASSERT_TRUE(runUntil([&] { return received > 1'000'000; }));
  tool->child.masterHandle.reset();
  const std::size_t atRelease = received;
  EXPECT_TRUE(runUntil([&] { return tool->exits > 0; })) << "its writes should fail";
  EXPECT_EQ(received, atRelease);
}

TEST_F(TerminalChildren, clearedHandlerClosesTheTerminalToo) {
  const Tool tool = spawn({"flood-forever"});
  tool->child.masterHandle->clearReadabilityHandler();
  EXPECT_TRUE(runUntil([&] { return tool->exits > 0; }));
  EXPECT_EQ(tool->output, "");
}

TEST_F(TerminalChildren, terminateAfterTheExitDoesNothing) {
  const Tool tool = spawn({"print", "x"});
  ASSERT_TRUE(runUntil([&] { return tool->exits > 0; }));
  tool->child.process->terminate();
  EXPECT_FALSE(tool->child.process->isRunning());
  EXPECT_EQ(tool->exits, 1);
}

TEST_F(TerminalChildren, exitIsReportedThoughThisProcessIgnoredSigchld) {
  children_.reset();
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  children_.emplace(mainQueue_, "");
  EXPECT_EQ(run({"exit", "5"}).exitStatus, 5);
  std::signal(SIGCHLD, before);
}

TEST_F(TerminalChildren, childrenOfOtherCodeAreNotReaped) {
  const pid_t other = fork();
  if (other == 0)
    _exit(9);
  EXPECT_EQ(outputOf({"print", "x"}), "x");
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 9);
}

} // namespace
} // namespace driftmark::test
