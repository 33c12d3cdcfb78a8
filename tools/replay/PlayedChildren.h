#pragma once

#include "ports/ChildProcesses.h"

#include <cstddef>
#include <functional>
#include <string>

namespace driftmark {

/// Child processes whose monitors are played once: their ends are kept from the core, which would
/// start them again, and reported here.
class PlayedChildren : public ChildProcesses {
public:
  /// `children` outlives this object. `onAllEnded` is called on the main thread once every monitor
  /// that was started has ended and its output was delivered.
  PlayedChildren(ChildProcesses& children, std::function<void()> onAllEnded)
      : children_(children), onAllEnded_(std::move(onAllEnded)) {}

  std::variant<TerminalChild, LaunchError> spawn(const ToolCommand& command, DataHandler onData,
                                                 ExitHandler onExit) override;
  std::shared_ptr<ToolRun> prepare(const ToolCommand& command, ToolOutput output) override;
  std::optional<LaunchError> launchDetached(const ToolCommand& command) override;

  /// Why a monitor could not be started; empty when all were.
  const std::string& failure() const { return failure_; }

private:
  ChildProcesses& children_;
  std::function<void()> onAllEnded_;
  std::size_t running_ = 0;
  std::string failure_;
};

} // namespace driftmark
