#pragma once

#include "platform/posix/children/IoThread.h"
#include "platform/posix/children/RunningChildren.h"
#include "platform/posix/children/TerminalChannel.h"
#include "ports/ChildProcesses.h"
#include "ports/MainQueue.h"

#include <memory>
#include <string>
#include <vector>

namespace driftmark {

/// Child processes of a POSIX system. One thread of its own, started with the first child, waits
/// for all terminals and exits; it costs nothing while nothing happens. Main thread unless stated
/// otherwise.
class PosixChildProcesses final : public ChildProcesses {
public:
  /// `systemRoot` is put before the absolute path of every tool; "" and "/" stand for none. The
  /// main queue outlives this object. Where the end of children was ignored in this process, that
  /// is set back, since their exit is waited for. Throws std::system_error when the system has no
  /// descriptors left.
  PosixChildProcesses(MainQueue& mainQueue, std::string systemRoot);
  PosixChildProcesses(const PosixChildProcesses&) = delete;
  PosixChildProcesses& operator=(const PosixChildProcesses&) = delete;

  /// Shuts down. What callers still hold of children, handles and runs stays safe to use.
  ~PosixChildProcesses() override;

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;

  /// A detached tool that has ended is reaped when the next child is started.
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Ends all children but the detached ones, with SIGKILL those that a SIGTERM does not end within
  /// a second, and makes every `ToolRun::run` return. From then on launches fail and no handler is
  /// called.
  void shutdown();

private:
  void remember(const std::shared_ptr<TerminalChannel>& channel);

  MainQueue& mainQueue_;
  const std::shared_ptr<RunningChildren> children_;
  std::vector<std::weak_ptr<TerminalChannel>> channels_;
  IoThread ioThread_;
};

} // namespace driftmark
