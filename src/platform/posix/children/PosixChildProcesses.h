#pragma once

#include "platform/posix/children/ChildRegistry.h"
#include "platform/posix/children/IoThread.h"
#include "platform/posix/children/TerminalChannel.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace driftmark {

/// Child processes on Linux and macOS. Who does what:
///
/// - `PosixChildProcesses` is the port: it composes the others and shuts them down.
/// - `PosixChildProcess` is one launched child; `PosixToolRun` is one blocking run of a tool.
/// - `ChildRegistry` records all children that are not reaped yet and ends them together;
///   `launchTool` starts a single one by `posix_spawn`.
/// - `TerminalChannel` passes the output and the exit of one child on a terminal on to its
///   handlers, through an `OutputQueue`; `IoThread` is the one thread that waits for all of these
///   terminals. It starts with the first such child and costs nothing while nothing happens.
///
/// Main thread unless stated otherwise.
class PosixChildProcesses final : public ChildProcesses {
public:
  /// `systemRoot` is put before the absolute path of every tool; "" and "/" stand for none. The
  /// main queue outlives this object. If this process ignores SIGCHLD, its default action is set
  /// again, since the system discards exits of children otherwise. Throws std::system_error when
  /// the system has no descriptors left.
  PosixChildProcesses(MainQueue& mainQueue, const std::string& systemRoot);
  PosixChildProcesses(const PosixChildProcesses&) = delete;
  PosixChildProcesses& operator=(const PosixChildProcesses&) = delete;

  /// Shuts down. Children, handles and runs that callers still hold stay safe to use.
  ~PosixChildProcesses() override;

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;

  /// A detached tool that has ended is reaped when the next child is started.
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Ends all children except the detached ones: by SIGTERM, and by SIGKILL those that still run
  /// after `ChildRegistry::gracePeriod`. Makes every `ToolRun::run` return. From then on launches
  /// fail and no handler is called.
  void shutdown();

private:
  void remember(const std::shared_ptr<TerminalChannel>& channel);

  MainQueue& mainQueue_;
  const std::shared_ptr<ChildRegistry> children_;
  std::vector<std::weak_ptr<TerminalChannel>> channels_;
  IoThread ioThread_;
};

// PosixToolRun.cpp

/// A tool whose launch, output and exit are handled by the thread that calls `run`. When all
/// children are being ended, `run` stops reading and returns after the child's end.
class PosixToolRun final : public ToolRun {
public:
  PosixToolRun(std::shared_ptr<ChildRegistry> children, ToolCommand command, ToolOutput output);

  std::int32_t identifier() const override;
  bool isRunning() const override;
  void terminate() override;
  std::variant<ToolResult, LaunchError> run() override;

private:
  std::variant<std::shared_ptr<PosixChildProcess>, LaunchError> launch(OutputRouting output);
  ToolResult readToEnd(PosixChildProcess& child, FileDescriptor pipe) const;
  std::shared_ptr<PosixChildProcess> launched() const;

  const std::shared_ptr<ChildRegistry> children_;
  const ToolCommand command_;
  const ToolOutput output_;
  mutable std::mutex mutex_;
  std::shared_ptr<PosixChildProcess> child_; ///< set once launched
};

} // namespace driftmark
