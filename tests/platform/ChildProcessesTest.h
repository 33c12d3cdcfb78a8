#pragma once

#include "harness/BuiltFiles.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A spawned child and what came from it.
struct SpawnedTool {
  TerminalChild child;
  std::string output;
  int exits = 0;
  std::string outputAtExit;
};

/// Real child processes on the Qt main queue.
class ChildProcessesTest : public testing::Test {
protected:
  using Steps = std::vector<std::string>;
  using Tool = std::shared_ptr<SpawnedTool>;

  /// The helper tool with these steps.
  static ToolCommand childTool(Steps steps) { return {childToolPath(), std::move(steps)}; }

  /// Spawns the helper tool and keeps its output.
  Tool spawn(const Steps& steps);

  /// The same with `onData` in the place of keeping the output.
  Tool spawn(const Steps& steps, const std::function<void(std::string_view)>& onData);

  /// Spawns the helper tool and waits for its end; returns its output.
  std::string outputOf(const Steps& steps);

  /// Runs the helper tool on this thread.
  ToolResult run(const Steps& steps, ToolOutput output = ToolOutput::capture);

  /// The error of a launch that must fail.
  LaunchError failedSpawn(const ToolCommand& command);

  /// Waits for a line that holds nothing but a process identifier, the first one of the output.
  static int identifierFrom(const Tool& tool);

  LinuxMainQueue mainQueue_;
  std::optional<PosixChildProcesses> children_{std::in_place, mainQueue_, ""};
};

/// Whether this process has a child, be it one that has ended and was not reaped.
bool hasChildren();

} // namespace driftmark::test
