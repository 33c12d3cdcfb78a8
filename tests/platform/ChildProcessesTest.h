#pragma once

#include "harness/BuiltFiles.h"
#include "platform/linux/runloop/LinuxMainQueue.h"
#include "platform/posix/children/PosixChildProcesses.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace driftmark::test {

/// A spawned child, its output and its exits.
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

  /// The command for the helper tool with these steps.
  static ToolCommand childTool(Steps steps) { return {childToolPath(), std::move(steps)}; }

  /// Spawns the helper tool and keeps its output.
  Tool spawn(const Steps& steps);

  /// Spawns the helper tool and passes its output to `onData` instead of keeping it.
  Tool spawn(const Steps& steps, const std::function<void(std::string_view)>& onData);

  /// Spawns the helper tool and waits for its end; returns its output.
  std::string outputOf(const Steps& steps);

  /// Runs the helper tool to its end on this thread.
  ToolResult run(const Steps& steps, ToolOutput output = ToolOutput::capture);

  /// Makes a launch that must fail. Returns its error.
  LaunchError failedSpawn(const ToolCommand& command);

  /// Waits for the first line of the output and returns the process identifier in it.
  static int identifierFrom(const Tool& tool);

  LinuxMainQueue mainQueue_;
  std::optional<PosixChildProcesses> children_{std::in_place, mainQueue_, ""};
};

/// Runs a tool on a thread. When the run does not return in time, it fails the test and kills all
/// children of this process.
class ToolThread {
public:
  explicit ToolThread(std::shared_ptr<ToolRun> toolRun);
  ToolThread(const ToolThread&) = delete;
  ToolThread& operator=(const ToolThread&) = delete;
  ~ToolThread() { join(); }

  /// Waits for the run and returns its result.
  std::variant<ToolResult, LaunchError> result();

private:
  void join();

  const std::shared_ptr<ToolRun> toolRun_;
  std::variant<ToolResult, LaunchError> result_;
  std::atomic<bool> returned_ = false;
  std::thread thread_;
};

/// Whether this process has a child, running or ended and not reaped.
bool hasChildren();

} // namespace driftmark::test
