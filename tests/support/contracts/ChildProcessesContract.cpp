#include "support/contracts/ChildProcessesContract.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <variant>

namespace driftmark::test {

using namespace std::string_literals;

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ChildProcessesContract);

namespace {

constexpr int sigkill = 9;
constexpr int sigterm = 15;

} // namespace

std::shared_ptr<ChildProcessesContract::Spawned> ChildProcessesContract::spawn(const Steps& steps) {
  auto spawned = std::make_shared<Spawned>();
  const std::thread::id here = std::this_thread::get_id();
  auto result = childProcesses().spawn(
      subject_->tool(steps),
      [spawned, here](std::string_view bytes) {
        spawned->calledElsewhere |= std::this_thread::get_id() != here;
        spawned->chunks.push_back(bytes.size());
        std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(spawned->output),
                     [](char byte) { return byte != '\r'; });
      },
      [spawned, here] {
        spawned->calledElsewhere |= std::this_thread::get_id() != here;
        ++spawned->exits;
        spawned->outputAtExit = spawned->output;
        spawned->runningAtExit = spawned->child.process && spawned->child.process->isRunning();
      });
  if (const auto* error = std::get_if<LaunchError>(&result)) {
    ADD_FAILURE() << "the helper tool did not start: " << error->description;
    return nullptr;
  }
  spawned->child = std::get<TerminalChild>(std::move(result));
  EXPECT_TRUE(spawned->chunks.empty()) << "output was delivered inside spawn";
  EXPECT_EQ(spawned->exits, 0) << "the exit was reported inside spawn";
  return spawned;
}

std::shared_ptr<ToolRun> ChildProcessesContract::prepare(const Steps& steps, ToolOutput output) {
  return childProcesses().prepare(subject_->tool(steps), output);
}

ToolResult ChildProcessesContract::run(const Steps& steps, ToolOutput output) {
  auto result = prepare(steps, output)->run();
  if (const auto* error = std::get_if<LaunchError>(&result)) {
    ADD_FAILURE() << "the helper tool did not start: " << error->description;
    return {};
  }
  return std::get<ToolResult>(std::move(result));
}

void ChildProcessesContract::drain() {
  const auto drained = std::make_shared<bool>(false);
  subject_->async([drained] { *drained = true; });
  EXPECT_TRUE(runUntil([drained] { return *drained; }));
}

// ---- children on a terminal ----

TEST_P(ChildProcessesContract, outputArrivesInOrderBeforeSingleExit) {
  const auto spawned = spawn({"print", "one ", "print", "two ", "print", "three"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "one two three");
  EXPECT_EQ(spawned->outputAtExit, "one two three");
  drain();
  EXPECT_EQ(spawned->exits, 1);
  EXPECT_FALSE(spawned->calledElsewhere);
}

TEST_P(ChildProcessesContract, outputArrivesWhileChildRuns) {
  const auto spawned = spawn({"print", "ready\n", "wait"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready\n"; }));
  EXPECT_EQ(spawned->exits, 0);
  EXPECT_TRUE(spawned->child.process->isRunning());
  spawned->child.process->terminate();
  EXPECT_TRUE(runUntil([&] { return spawned->exits == 1; }));
}

TEST_P(ChildProcessesContract, errorOutputArrivesToo) {
  const auto spawned = spawn({"print", "out ", "print-error", "error ", "print", "out again"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "out error out again");
}

TEST_P(ChildProcessesContract, silentChildOnlyExits) {
  const auto spawned = spawn({"exit", "3"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "");
  EXPECT_TRUE(spawned->chunks.empty());
}

TEST_P(ChildProcessesContract, bytesOtherThanLineEndsAreUnchanged) {
  const auto spawned = spawn({"print-bytes", "00ff801b5b316dc3e2980941"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "\0\xff\x80\x1b[1m\xc3\xe2\x98\tA"s);
}

TEST_P(ChildProcessesContract, argumentsReachToolUnchanged) {
  const std::string text = " two  spaces 'quotes\" $HOME \\ caf\u00e9 \u2601 *";
  const auto spawned = spawn({"print", text, "print", "", "print", "|end"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, text + "|end");
}

TEST_P(ChildProcessesContract, largeOutputArrivesCompletelyInBoundedChunks) {
  constexpr std::size_t count = 20000;
  const std::string line = "a line of some forty-eight bytes, line end here\n";
  const auto spawned = spawn({"print-many", std::to_string(count), line, "print", "last"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  std::string expected;
  for (std::size_t number = 0; number < count; ++number)
    expected += line;
  expected += "last";
  EXPECT_TRUE(spawned->outputAtExit == expected) << spawned->output.size() << " bytes came";
  const auto [smallest, largest] =
      std::minmax_element(spawned->chunks.begin(), spawned->chunks.end());
  EXPECT_GT(*smallest, 0U);
  EXPECT_LE(*largest, ChildProcesses::maxChunkSize);
}

TEST_P(ChildProcessesContract, runningChildHasUniqueIdentifier) {
  const auto first = spawn({"wait"});
  const auto second = spawn({"wait"});
  ASSERT_TRUE(first && second);
  EXPECT_GT(first->child.process->identifier(), 0);
  EXPECT_GT(second->child.process->identifier(), 0);
  EXPECT_NE(first->child.process->identifier(), second->child.process->identifier());
  EXPECT_TRUE(first->child.process->isRunning());
  EXPECT_TRUE(second->child.process->isRunning());
  first->child.process->terminate();
  second->child.process->terminate();
  EXPECT_TRUE(runUntil([&] { return first->exits == 1 && second->exits == 1; }));
}

TEST_P(ChildProcessesContract, childNoLongerRunsWhenExitIsReported) {
  const auto spawned = spawn({"print", "x"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_FALSE(spawned->runningAtExit);
  EXPECT_FALSE(spawned->child.process->isRunning());
  EXPECT_GT(spawned->child.process->identifier(), 0);
}

TEST_P(ChildProcessesContract, terminateRequestEndsWaitingChild) {
  const auto spawned = spawn({"print", "ready", "wait"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready"; }));
  spawned->child.process->terminate();
  spawned->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_FALSE(spawned->child.process->isRunning());
  spawned->child.process->terminate();
  drain();
  EXPECT_EQ(spawned->exits, 1);
}

TEST_P(ChildProcessesContract, lastOutputOfTerminatedChildArrivesBeforeExit) {
  const auto spawned = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready "; }));
  spawned->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->outputAtExit, "ready goodbye");
}

TEST_P(ChildProcessesContract, clearedHandlerGetsNothingMore) {
  const auto spawned = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready "; }));
  spawned->child.masterHandle->clearReadabilityHandler();
  spawned->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  drain();
  EXPECT_EQ(spawned->output, "ready ");
  EXPECT_EQ(spawned->exits, 1);
}

TEST_P(ChildProcessesContract, releasedHandleGetsNothingMore) {
  const auto spawned = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready "; }));
  spawned->child.masterHandle.reset();
  spawned->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  drain();
  EXPECT_EQ(spawned->output, "ready ");
  EXPECT_EQ(spawned->exits, 1);
}

TEST_P(ChildProcessesContract, dataHandlerMayReleaseHandle) {
  const auto child = std::make_shared<TerminalChild>();
  const auto finished = std::make_shared<bool>(false);
  const auto calls = std::make_shared<int>(0);
  auto result = childProcesses().spawn(
      subject_->tool({"print", "ready", "wait"}),
      [child, calls](std::string_view) {
        ++*calls;
        child->masterHandle.reset();
        child->process->terminate();
      },
      [child, finished] {
        child->process.reset();
        *finished = true;
      });
  ASSERT_TRUE(std::holds_alternative<TerminalChild>(result));
  *child = std::get<TerminalChild>(std::move(result));
  ASSERT_TRUE(runUntil([&] { return *finished; }));
  drain();
  EXPECT_EQ(*calls, 1);
}

TEST_P(ChildProcessesContract, exitHandlerMayReleaseHandle) {
  const auto child = std::make_shared<TerminalChild>();
  const auto output = std::make_shared<std::string>();
  const auto exits = std::make_shared<int>(0);
  auto result = childProcesses().spawn(
      subject_->tool({"print", "all of it"}),
      [output](std::string_view bytes) { *output += bytes; },
      [child, exits] {
        child->masterHandle->clearReadabilityHandler();
        child->masterHandle.reset();
        child->process.reset();
        ++*exits;
      });
  ASSERT_TRUE(std::holds_alternative<TerminalChild>(result));
  *child = std::get<TerminalChild>(std::move(result));
  ASSERT_TRUE(runUntil([&] { return *exits > 0; }));
  drain();
  EXPECT_EQ(*output, "all of it");
  EXPECT_EQ(*exits, 1);
}

TEST_P(ChildProcessesContract, releasedProcessObjectDoesNotEndChild) {
  const auto spawned = spawn({"print-many", "20000", "still writing\n", "print", "done"});
  ASSERT_TRUE(spawned);
  spawned->child.process.reset();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_TRUE(spawned->output.ends_with("still writing\ndone"));
  EXPECT_EQ(spawned->output.size(), 20000U * 14 + 4);
}

TEST_P(ChildProcessesContract, handlersAreReleasedAfterExit) {
  const auto token = std::make_shared<int>(0);
  bool exited = false;
  {
    auto result = childProcesses().spawn(
        subject_->tool({"print", "x"}), [token](std::string_view) {},
        [token, &exited] { exited = true; });
    ASSERT_TRUE(std::holds_alternative<TerminalChild>(result));
    ASSERT_TRUE(runUntil([&] { return exited; }));
  }
  EXPECT_TRUE(runUntil([&] { return token.use_count() == 1; }));
}

TEST_P(ChildProcessesContract, outputOfChildrenIsNotMixed) {
  const auto first = spawn({"print-many", "2000", "aaaaaaa\n"});
  const auto second = spawn({"print-many", "2000", "bbbbbbb\n"});
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(runUntil([&] { return first->exits == 1 && second->exits == 1; }));
  EXPECT_EQ(first->output.size(), 16000U);
  EXPECT_EQ(first->output.find('b'), std::string::npos);
  EXPECT_EQ(second->output.size(), 16000U);
  EXPECT_EQ(second->output.find('a'), std::string::npos);
}

TEST_P(ChildProcessesContract, endOfOneChildDoesNotAffectOther) {
  const auto first = spawn({"print", "ready", "wait"});
  const auto second = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(runUntil([&] { return !first->output.empty() && !second->output.empty(); }));
  first->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return first->exits == 1; }));
  EXPECT_EQ(second->exits, 0);
  EXPECT_TRUE(second->child.process->isRunning());
  second->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return second->exits == 1; }));
  EXPECT_EQ(second->output, "ready goodbye");
}

TEST_P(ChildProcessesContract, childAndRunReadNothingFromNullDevice) {
  const auto spawned = spawn({"print-input-size"});
  ASSERT_TRUE(spawned);
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "0");
  EXPECT_EQ(run({"print-input-size"}).output, "0");
}

TEST_P(ChildProcessesContract, toolThatCannotBeStartedIsLaunchErrorWithoutCalls) {
  for (const ToolCommand& command : {subject_->missingTool(), subject_->forbiddenTool()}) {
    const auto token = std::make_shared<int>(0);
    const auto result = childProcesses().spawn(
        command, [token](std::string_view) { ++*token; }, [token] { ++*token; });
    const auto* error = std::get_if<LaunchError>(&result);
    ASSERT_TRUE(error) << command.executable;
    EXPECT_EQ(error->stage, LaunchError::Stage::launch);
    EXPECT_FALSE(error->description.empty());
    drain();
    EXPECT_EQ(*token, 0);
    EXPECT_EQ(token.use_count(), 1);
  }
}

// ---- runs ----

TEST_P(ChildProcessesContract, runReturnsCompleteOutput) {
  const ToolResult result = run({"print", "line\r\n\n", "print-bytes", "00ff0a", "print", "end"});
  EXPECT_EQ(result.output, "line\r\n\n\0\xff\nend"s);
  EXPECT_EQ(result.exitStatus, 0);
}

TEST_P(ChildProcessesContract, runDiscardsErrorOutput) {
  EXPECT_EQ(run({"print", "out", "print-error", "error", "print", "put"}).output, "output");
}

TEST_P(ChildProcessesContract, runReturnsExitCode) {
  const ToolResult result = run({"print", "x", "exit", "42"});
  EXPECT_EQ(result.exitStatus, 42);
  EXPECT_EQ(result.output, "x");
}

TEST_P(ChildProcessesContract, runReturnsSignalThatEndedTool) {
  EXPECT_EQ(run({"print", "x", "raise", std::to_string(sigkill)}).exitStatus, sigkill);
}

TEST_P(ChildProcessesContract, discardedOutputIsEmpty) {
  const ToolResult result =
      run({"print-many", "20000", "nobody reads this\n", "exit", "7"}, ToolOutput::discard);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.exitStatus, 7);
}

TEST_P(ChildProcessesContract, runReadsMoreThanPipeCapacity) {
  const ToolResult result = run({"print-many", "100000", "0123456789", "exit", "1"});
  EXPECT_EQ(result.output.size(), 1'000'000U);
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_P(ChildProcessesContract, runThatCannotBeStartedIsLaunchError) {
  for (const ToolCommand& command : {subject_->missingTool(), subject_->forbiddenTool()}) {
    const auto toolRun = childProcesses().prepare(command, ToolOutput::capture);
    const auto result = toolRun->run();
    const auto* error = std::get_if<LaunchError>(&result);
    ASSERT_TRUE(error) << command.executable;
    EXPECT_EQ(error->stage, LaunchError::Stage::launch);
    EXPECT_FALSE(error->description.empty());
    EXPECT_FALSE(toolRun->isRunning());
    EXPECT_EQ(toolRun->identifier(), 0);
    toolRun->terminate();
  }
}

TEST_P(ChildProcessesContract, preparedRunIsNotLaunched) {
  const auto toolRun = prepare({"print", "x"});
  EXPECT_FALSE(toolRun->isRunning());
  EXPECT_EQ(toolRun->identifier(), 0);
  toolRun->terminate();
  const auto result = toolRun->run();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).output, "x");
  EXPECT_EQ(std::get<ToolResult>(result).exitStatus, 0);
  EXPECT_FALSE(toolRun->isRunning());
  EXPECT_GT(toolRun->identifier(), 0);
  toolRun->terminate();
}

TEST_P(ChildProcessesContract, terminateRequestEndsRunOnOtherThread) {
  const auto toolRun = prepare({"wait"});
  std::variant<ToolResult, LaunchError> result;
  std::thread background([&] { result = toolRun->run(); });
  const bool running = runUntil([&] { return toolRun->isRunning(); });
  EXPECT_TRUE(running);
  EXPECT_GT(toolRun->identifier(), 0);
  toolRun->terminate();
  background.join();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  EXPECT_EQ(std::get<ToolResult>(result).exitStatus, sigterm);
  EXPECT_EQ(std::get<ToolResult>(result).output, "");
  EXPECT_FALSE(toolRun->isRunning());
}

TEST_P(ChildProcessesContract, terminatedRunKeepsEarlierOutput) {
  const auto toolRun = prepare({"print", "half a rep", "wait"});
  std::variant<ToolResult, LaunchError> result;
  std::thread background([&] { result = toolRun->run(); });
  // A tool that is ended before its first step prints nothing.
  EXPECT_TRUE(runUntil([&] { return toolRun->isRunning(); }));
  toolRun->terminate();
  background.join();
  ASSERT_TRUE(std::holds_alternative<ToolResult>(result));
  const std::string output = std::get<ToolResult>(result).output;
  EXPECT_TRUE(output == "half a rep" || output.empty()) << output;
}

TEST_P(ChildProcessesContract, runsOnSeveralThreadsKeepOwnResults) {
  constexpr std::size_t count = 6;
  std::array<std::shared_ptr<ToolRun>, count> runs;
  for (std::size_t number = 0; number < count; ++number)
    runs.at(number) =
        prepare({"print-many", "3000", std::to_string(number), "exit", std::to_string(number + 1)});
  std::array<std::optional<ToolResult>, count> results;
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < count; ++number)
    threads.emplace_back([&, number] {
      auto result = runs.at(number)->run();
      if (auto* finished = std::get_if<ToolResult>(&result))
        results.at(number) = std::move(*finished);
    });
  for (std::thread& thread : threads)
    thread.join();
  std::set<std::int32_t> identifiers;
  for (std::size_t number = 0; number < count; ++number) {
    const auto& result = results.at(number);
    ASSERT_TRUE(result) << number;
    EXPECT_EQ(result->exitStatus, static_cast<int>(number + 1));
    EXPECT_EQ(result->output, std::string(3000, static_cast<char>('0' + number)));
    identifiers.insert(runs.at(number)->identifier());
  }
  EXPECT_EQ(identifiers.size(), count);
}

TEST_P(ChildProcessesContract, detachedToolIsLaunched) {
  EXPECT_FALSE(childProcesses().launchDetached(subject_->tool({})).has_value());
}

TEST_P(ChildProcessesContract, detachedToolThatCannotBeStartedIsLaunchError) {
  for (const ToolCommand& command : {subject_->missingTool(), subject_->forbiddenTool()}) {
    const auto error = childProcesses().launchDetached(command);
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->stage, LaunchError::Stage::launch);
    EXPECT_FALSE(error->description.empty());
  }
}

TEST_P(ChildProcessesContract, releasedRunStartsNothing) {
  auto toolRun = prepare({"print", "never"});
  const std::weak_ptr<ToolRun> weak = toolRun;
  toolRun.reset();
  drain();
  EXPECT_TRUE(weak.expired());
}

TEST_P(ChildProcessesContract, runsAndChildrenDoNotAffectEachOther) {
  const auto spawned = spawn({"print", "ready ", "print-when-terminated", "goodbye"});
  ASSERT_TRUE(spawned);
  for (int number = 0; number < 5; ++number)
    EXPECT_EQ(run({"print", "x", "exit", std::to_string(number)}).exitStatus, number);
  ASSERT_TRUE(runUntil([&] { return spawned->output == "ready "; }));
  EXPECT_EQ(spawned->exits, 0);
  spawned->child.process->terminate();
  ASSERT_TRUE(runUntil([&] { return spawned->exits > 0; }));
  EXPECT_EQ(spawned->output, "ready goodbye");
}

} // namespace driftmark::test
