#pragma once

#include "platform/posix/FileDescriptor.h"
#include "ports/ChildProcesses.h"

#include <mutex>

#include <sys/types.h>

namespace driftmark {

/// A launched child of this process. Only the thread that waits for the child touches
/// `exitDescriptor` and calls `reap`; everything else on any thread.
class PosixChildProcess final : public ChildProcess {
public:
  /// Takes over the child `pid` and the descriptor that polls as readable once it has ended.
  PosixChildProcess(pid_t pid, FileDescriptor exitDescriptor);

  std::int32_t identifier() const override { return pid_; }
  bool isRunning() const override;
  void terminate() override;

  /// Sends SIGKILL to the child. Does nothing when it is not running.
  void kill();

  /// Polls as readable once the child has ended; -1 after `reap`.
  int exitDescriptor() const { return exitDescriptor_.number(); }

  /// Takes the ended child off the system's list, waiting for its end where needed. Returns its
  /// exit code, or the number of the signal that ended it. Call it once.
  int reap();

private:
  void send(int signal);

  const pid_t pid_;
  FileDescriptor exitDescriptor_;
  mutable std::mutex mutex_; ///< no signal goes out while the child is being reaped
  bool running_ = true;
};

} // namespace driftmark
