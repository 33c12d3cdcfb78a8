#include "ChildProcessesTest.h"

#include "harness/Orphans.h"
#include "harness/qt/EventLoop.h"

#include <csignal>
#include <utility>
#include <variant>

#include <sys/wait.h>

namespace driftmark::test {

ChildProcessesTest::Tool ChildProcessesTest::spawn(const Steps& steps) {
  return spawn(steps, nullptr);
}

ChildProcessesTest::Tool
ChildProcessesTest::spawn(const Steps& steps, const std::function<void(std::string_view)>& onData) {
  auto tool = std::make_shared<SpawnedTool>();
  const std::weak_ptr weak = tool;
  auto result = children_->spawn(
      childTool(steps),
      [weak, onData](std::string_view bytes) {
        if (onData)
          onData(bytes);
        else if (const auto self = weak.lock())
          self->output += bytes;
      },
      [weak] {
        if (const auto self = weak.lock()) {
          ++self->exits;
          self->outputAtExit = self->output;
        }
      });
  if (const auto* const error = std::get_if<LaunchError>(&result))
    ADD_FAILURE() << "the helper tool did not start: " << error->description;
  else
    tool->child = std::get<TerminalChild>(std::move(result));
  return tool;
}

std::string ChildProcessesTest::outputOf(const Steps& steps) {
  const Tool tool = spawn(steps);
  EXPECT_TRUE(runUntil([&] { return tool->exits > 0; }));
  return tool->output;
}

ToolResult ChildProcessesTest::run(const Steps& steps, ToolOutput output) {
  auto result = children_->prepare(childTool(steps), output)->run();
  if (const auto* const error = std::get_if<LaunchError>(&result)) {
    ADD_FAILURE() << "the helper tool did not start: " << error->description;
    return {};
  }
  return std::get<ToolResult>(std::move(result));
}

LaunchError ChildProcessesTest::failedSpawn(const ToolCommand& command) {
  auto result = children_->spawn(
      command, [](std::string_view) { ADD_FAILURE() << "unexpected output"; },
      [] { ADD_FAILURE() << "unexpected exit"; });
  if (!std::holds_alternative<LaunchError>(result)) {
    ADD_FAILURE() << "the launch did not fail";
    return {};
  }
  return std::get<LaunchError>(result);
}

int ChildProcessesTest::identifierFrom(const Tool& tool) {
  EXPECT_TRUE(runUntil([&] { return tool->output.find('\n') != std::string::npos; }));
  return std::stoi(tool->output);
}

ToolThread::ToolThread(std::shared_ptr<ToolRun> toolRun)
    : toolRun_(std::move(toolRun)), thread_([this] {
        result_ = toolRun_->run();
        returned_ = true;
      }) {}

std::variant<ToolResult, LaunchError> ToolThread::result() {
  join();
  return result_;
}

void ToolThread::join() {
  if (!thread_.joinable())
    return;
  if (!pollUntil([this] { return returned_.load(); })) {
    ADD_FAILURE() << "the run of a tool did not return";
    for (const int child : Orphans::children())
      kill(child, SIGKILL);
  }
  thread_.join();
}

bool hasChildren() {
  siginfo_t information{};
  return waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

} // namespace driftmark::test
