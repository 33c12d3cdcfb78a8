#pragma once

#include "platform/posix/FileDescriptor.h"
#include "ports/ChildProcesses.h"

#include <mutex>

#include <sys/types.h>

namespace driftmark {

/// One launched child of this process: its identifier, the signals sent to it, its exit. Only the
/// thread that waits for the child uses `exitDescriptor` and calls `reap`; all else is for any
/// thread.
class PosixChildProcess final : public ChildProcess {
public:
  /// Takes over the child `pid` and the descriptor that becomes readable when it ends.
  PosixChildProcess(pid_t pid, FileDescriptor exitDescriptor);

  std::int32_t identifier() const override { return pid_; }
  bool isRunning() const override;
  void terminate() override;

  /// Sends SIGKILL to the child. Does nothing when it is not running.
  void kill();

  /// Becomes readable when the child ends; -1 after `reap`.
  int exitDescriptor() const { return exitDescriptor_.number(); }

  /// Removes the ended child from the system's list, and first waits for its end if needed. Returns
  /// its exit code, or the number of the signal that ended it. Call it once.
  int reap();

private:
  void send(int signal);

  const pid_t pid_;
  FileDescriptor exitDescriptor_;
  mutable std::mutex mutex_; ///< so that no signal is sent while the child is being reaped
  bool running_ = true;
};

} // namespace driftmark
