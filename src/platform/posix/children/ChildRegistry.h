#pragma once

#include "platform/posix/SystemCalls.h"
#include "platform/posix/children/LaunchTool.h"
#include "platform/posix/children/PosixChildProcess.h"
#include "ports/ChildProcesses.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace driftmark {

/// Launches children and records those that have not been reaped, so that all of them, except the
/// detached ones, can be ended together. Any thread.
class ChildRegistry {
public:
  /// How long `endAll` waits after SIGTERM before it sends SIGKILL, and how long after SIGKILL
  /// before it returns anyway.
  static constexpr std::chrono::seconds gracePeriod{1};

  /// `systemRoot` is put before the path of every tool. Throws std::system_error when the system
  /// has no descriptors left.
  explicit ChildRegistry(const std::string& systemRoot);

  /// Starts a tool. Fails once `endAll` has begun. The caller waits for the child's end on its exit
  /// descriptor and then calls `reap`.
  std::variant<std::shared_ptr<PosixChildProcess>, LaunchError> launch(const ToolCommand& command,
                                                                       OutputRouting output);

  /// Starts a tool in a session of its own, with its output discarded. `endAll` does not end it.
  /// Fails like `launch`.
  std::optional<LaunchError> launchDetached(const ToolCommand& command);

  /// Reaps the detached tools that have ended.
  void reapDetached();

  /// Reaps a child that has ended and removes it from the record. Returns its exit status.
  int reap(PosixChildProcess& child);

  /// Ends every child: sends SIGTERM, and SIGKILL to those that still run after the grace period.
  /// Returns when the threads that wait for the children have reaped all of them.
  void endAll();

  /// A descriptor that becomes readable when `endAll` begins, and stays so.
  int closingDescriptor() const { return closing_.readEnd.number(); }

private:
  void signalAll(void (PosixChildProcess::*signal)());
  bool awaitAll();

  const std::string systemRoot_;
  std::mutex mutex_;
  std::condition_variable reaped_;
  std::vector<std::shared_ptr<PosixChildProcess>> children_;
  std::vector<pid_t> detached_; ///< not known to have ended
  Pipe closing_;
};

} // namespace driftmark
