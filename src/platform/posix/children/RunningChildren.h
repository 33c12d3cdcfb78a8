#pragma once

#include "platform/posix/SystemCalls.h"
#include "platform/posix/children/PosixChildProcess.h"
#include "platform/posix/children/ToolLauncher.h"
#include "ports/ChildProcesses.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace driftmark {

/// Launches children and knows those that have not been reaped, so that all can be ended together,
/// but for the detached ones. Any thread.
class RunningChildren {
public:
  /// `systemRoot` is put before the path of every tool. Throws std::system_error when the system
  /// has no descriptors left.
  explicit RunningChildren(std::string systemRoot);

  /// Starts a tool. Fails from the moment that `endAll` has begun. The caller waits for the child's
  /// end on its exit descriptor and then calls `reap`.
  std::variant<std::shared_ptr<PosixChildProcess>, LaunchError> launch(const ToolCommand& command,
                                                                       OutputRouting output);

  /// Starts a tool in a session of its own, with its output discarded, that `endAll` leaves alone.
  /// Fails as `launch` does.
  std::optional<LaunchError> launchDetached(const ToolCommand& command);

  /// Takes the detached tools that have ended off the system's list.
  void reapDetached();

  /// Reaps a child that has ended and forgets it. Returns its exit status.
  int reap(PosixChildProcess& child);

  /// Ends every child, first by SIGTERM, by SIGKILL where that does not do it soon. Returns when
  /// all have been reaped by those who wait for them.
  void endAll();

  /// Polls as readable from the moment that `endAll` has begun.
  int closingDescriptor() const { return closing_.readEnd.number(); }

private:
  void signalAll(void (PosixChildProcess::*signal)());
  bool awaitAll();

  const std::string systemRoot_;
  std::mutex mutex_;
  std::condition_variable reaped_;
  std::vector<std::shared_ptr<PosixChildProcess>> children_;
  std::vector<pid_t> detached_; ///< not known to have ended
  system_calls::Pipe closing_;
};

} // namespace driftmark
