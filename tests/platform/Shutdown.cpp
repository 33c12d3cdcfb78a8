// How the shutdown of the child processes ends children and runs, and what stays usable.

#include "ChildProcessesTest.h"
#include "Descriptors.h"
#include "harness/qt/EventLoop.h"

#include <array>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace driftmark::test {
namespace {

class Shutdown : public ChildProcessesTest {};

TEST_F(Shutdown, childrenOnTerminalsEnd) {
  const Tool waiting = spawn({"wait"});
  const Tool flooding = spawn({"flood-forever"});
  children_.reset();
  EXPECT_FALSE(hasChildren());
  EXPECT_FALSE(waiting->child.process->isRunning());
  EXPECT_FALSE(flooding->child.process->isRunning());
}

TEST_F(Shutdown, childThatIgnoresTheRequestIsKilled) {
  const Tool tool = spawn({"ignore-terminate", "print", "ready", "wait"});
  ASSERT_TRUE(runUntil([&] { return tool->output == "ready"; }));
  children_.reset();
  EXPECT_FALSE(hasChildren());
}

TEST_F(Shutdown, noHandlerIsCalledAfterwards) {
  const auto token = std::make_shared<int>(0);
  auto result = children_->spawn(
      childTool({"flood-forever"}), [token](std::string_view) { ++*token; }, [token] { ++*token; });
  ASSERT_TRUE(std::holds_alternative<TerminalChild>(result));
  ASSERT_TRUE(runUntil([&] { return *token > 0; }));
  const int calls = *token;
  children_.reset();
  EXPECT_EQ(token.use_count(), 1) << "the handlers should be released";
  runFor(Seconds(0.02));
  EXPECT_EQ(*token, calls);
}

TEST_F(Shutdown, handlesAndChildrenStaySafeToUse) {
  const Tool tool = spawn({"wait"});
  const auto toolRun = children_->prepare(childTool({"print", "x"}), ToolOutput::capture);
  children_.reset();
  tool->child.process->terminate();
  EXPECT_GT(tool->child.process->identifier(), 0);
  tool->child.masterHandle->clearReadabilityHandler();
  tool->child.masterHandle.reset();
  const auto result = toolRun->run();
  ASSERT_TRUE(std::holds_alternative<LaunchError>(result));
  EXPECT_FALSE(std::get<LaunchError>(result).description.empty());
}

TEST_F(Shutdown, laterLaunchesFail) {
  children_->shutdown();
  EXPECT_EQ(failedSpawn(childTool({"print", "x"})).stage, LaunchError::Stage::launch);
  const auto result = children_->prepare(childTool({}), ToolOutput::discard)->run();
  EXPECT_TRUE(std::holds_alternative<LaunchError>(result));
  children_->shutdown();
}

TEST_F(Shutdown, threadsThatRunToolsReturn) {
  std::array<std::shared_ptr<ToolRun>, 3> runs{
      children_->prepare(childTool({"wait"}), ToolOutput::capture),
      children_->prepare(childTool({"ignore-terminate", "wait"}), ToolOutput::discard),
      children_->prepare(childTool({"flood-forever"}), ToolOutput::capture)};
  std::list<ToolThread> threads;
  for (const auto& each : runs)
    threads.emplace_back(each);
  for (const auto& each : runs)
    EXPECT_TRUE(pollUntil([&] { return each->isRunning(); }));
  children_.reset();
  threads.clear();
  EXPECT_FALSE(hasChildren());
}

TEST_F(Shutdown, launchesOnOtherThreadsFailOrEnd) {
  for (int time = 0; time < 20; ++time) {
    children_.emplace(mainQueue_, "");
    std::list<ToolThread> threads;
    for (int number = 0; number < 3; ++number)
      threads.emplace_back(children_->prepare(childTool({"wait"}), ToolOutput::capture));
    children_.reset();
    threads.clear();
    EXPECT_FALSE(hasChildren());
  }
}

TEST_F(Shutdown, noDescriptorStaysOpen) {
  children_.reset();
  const auto before = openDescriptors();
  children_.emplace(mainQueue_, "");
  std::vector<Tool> tools;
  tools.reserve(5);
  for (int number = 0; number < 5; ++number)
    tools.push_back(spawn({"print", "x", "wait"}));
  EXPECT_EQ(openTerminals(), 5U);
  children_.reset();
  EXPECT_EQ(openTerminals(), 0U) << "handles still held must not keep them";
  tools.clear();
  runFor(Seconds(0.001)); // until no delivery waits
  EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace driftmark::test
