// How a tool runs to its end on the caller's thread: its output, its exit, its early end.

#include "ChildProcessesTest.h"
#include "harness/Orphans.h"
#include "harness/qt/EventLoop.h"

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <variant>

namespace driftmark::test {
namespace {

using Result = std::variant<ToolResult, LaunchError>;

class ToolRuns : public ChildProcessesTest {};

TEST_F(ToolRuns, standardDescriptorsAreNoTerminal) {
  EXPECT_EQ(run({"print-terminals"}).output, "other other other ");
}

TEST_F(ToolRuns, outputLargerThanPipeIsCapturedWhole) {
  const ToolResult result = run({"print-many", "5000000", "0123456789"});
  EXPECT_EQ(result.output.size(), 50'000'000U);
  EXPECT_EQ(result.output.substr(49'999'980), "01234567890123456789");
}

TEST_F(ToolRuns, discardedOutputCannotBlockTheTool) {
  EXPECT_EQ(
      run({"print-many", "5000000", "0123456789", "exit", "3"}, ToolOutput::discard).exitStatus, 3);
}

TEST_F(ToolRuns, errorOutputIsCapturedAlone) {
  const ToolResult result = run({"print-error", "Team", "print-error", "Identifier", "exit", "1"},
                                ToolOutput::captureError);
  EXPECT_EQ(result.output, "TeamIdentifier");
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(ToolRuns, outputBesideCapturedErrorsGoesToOutputOfThisProcess) {
  const std::string here = std::filesystem::read_symlink("/proc/self/fd/1");
  const auto toolRun =
      children_->prepare({"/bin/sh", {"-c", "out=$(readlink /proc/$$/fd/1); echo \"$out\" >&2"}},
                         ToolOutput::captureError);
  const Result result = toolRun->run();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).output, here + "\n");
}

/// Runs a tool that ends and leaves a process behind, which keeps its pipe open.
class LeftBehind {
public:
  explicit LeftBehind(const std::shared_ptr<ToolRun>& toolRun) : thread_(toolRun) {
    EXPECT_TRUE(pollUntil([&] { return toolRun->identifier() != 0 && !toolRun->isRunning(); }));
    EXPECT_EQ(Orphans::children().size(), 1U);
  }

  static int identifier() { return Orphans::children().at(0); }

  /// Waits for `run` and returns its result.
  Result result() { return thread_.result(); }

private:
  Orphans orphans_;
  ToolThread thread_;
};

TEST_F(ToolRuns, outputEndsWhenLastHolderClosesThePipe) {
  LeftBehind left(children_->prepare(childTool({"fork-holder", "exit", "4"}), ToolOutput::capture));
  const int holder = LeftBehind::identifier();
  EXPECT_TRUE(Orphans::end(holder));
  const Result result = left.result();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).output, std::to_string(holder) + "\n");
  EXPECT_EQ(std::get<ToolResult>(result).exitStatus, 4);
}

TEST_F(ToolRuns, shutdownDoesNotWaitForOtherHoldersOfThePipe) {
  LeftBehind left(children_->prepare(childTool({"fork-holder", "exit", "4"}), ToolOutput::capture));
  const int holder = LeftBehind::identifier();
  children_->shutdown();
  const Result result = left.result();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).exitStatus, 4);
  EXPECT_TRUE(Orphans::end(holder)) << "the other process should still run";
}

TEST_F(ToolRuns, hangingToolEndsWhenAnotherThreadTerminatesIt) {
  const auto toolRun =
      children_->prepare(childTool({"print", "half", "wait"}), ToolOutput::capture);
  ToolThread thread(toolRun);
  EXPECT_TRUE(pollUntil([&] { return toolRun->isRunning(); }));
  toolRun->terminate();
  const Result result = thread.result();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).exitStatus, SIGTERM);
  EXPECT_FALSE(toolRun->isRunning());
  EXPECT_GT(toolRun->identifier(), 0);
  toolRun->terminate();
}

TEST_F(ToolRuns, manyThreadsTerminateWhileToolsEnd) {
  for (int time = 0; time < 50; ++time) {
    const auto toolRun = children_->prepare(childTool({"print", "x"}), ToolOutput::capture);
    std::thread one([&] { toolRun->terminate(); });
    std::thread two([&] {
      while (toolRun->identifier() == 0 || toolRun->isRunning())
        toolRun->terminate();
    });
    const Result result = toolRun->run();
    one.join();
    two.join();
    EXPECT_TRUE(std::holds_alternative<ToolResult>(result));
  }
  EXPECT_FALSE(hasChildren());
}

TEST_F(ToolRuns, failedLaunchIsDescribedInTheSystemsWords) {
  const Result result = children_->prepare({"/missing/tool", {}}, ToolOutput::capture)->run();
  ASSERT_TRUE(std::holds_alternative<LaunchError>(result));
  EXPECT_EQ(std::get<LaunchError>(result).stage, LaunchError::Stage::launch);
  EXPECT_EQ(std::get<LaunchError>(result).description, "No such file or directory");
}

} // namespace
} // namespace driftmark::test
