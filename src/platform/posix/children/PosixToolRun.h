#pragma once

#include "platform/posix/children/RunningChildren.h"
#include "ports/ChildProcesses.h"

#include <memory>
#include <mutex>

namespace driftmark {

/// A tool that is launched, read to the end of its output and awaited by the thread that calls
/// `run`. When all children are being ended, `run` stops reading and returns once the child is
/// gone.
class PosixToolRun final : public ToolRun {
public:
  PosixToolRun(std::shared_ptr<RunningChildren> children, ToolCommand command, ToolOutput output);

  std::int32_t identifier() const override;
  bool isRunning() const override;
  void terminate() override;
  std::variant<ToolResult, LaunchError> run() override;

private:
  std::variant<std::shared_ptr<PosixChildProcess>, LaunchError> launch(OutputRouting output);
  ToolResult readToEnd(PosixChildProcess& child, FileDescriptor pipe) const;
  std::shared_ptr<PosixChildProcess> launched() const;

  const std::shared_ptr<RunningChildren> children_;
  const ToolCommand command_;
  const ToolOutput output_;
  mutable std::mutex mutex_;
  std::shared_ptr<PosixChildProcess> child_; ///< set once launched
};

} // namespace driftmark
