#pragma once

#include "platform/posix/children/ChildRegistry.h"
#include "ports/ChildProcesses.h"

#include <memory>
#include <mutex>

namespace driftmark {

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
