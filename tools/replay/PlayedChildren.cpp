#include "replay/PlayedChildren.h"

namespace driftmark {

std::variant<TerminalChild, LaunchError>
PlayedChildren::spawn(const ToolCommand& command, DataHandler onData, ExitHandler /*onExit*/) {
  auto started = children_.spawn(command, std::move(onData), [this] {
    if (--running_ == 0)
      onAllEnded_();
  });
  if (const auto* error = std::get_if<LaunchError>(&started))
    failure_ = error->description;
  else
    ++running_;
  return started;
}

std::shared_ptr<ToolRun> PlayedChildren::prepare(const ToolCommand& command, ToolOutput output) {
  return children_.prepare(command, output);
}

std::optional<LaunchError> PlayedChildren::launchDetached(const ToolCommand& command) {
  return children_.launchDetached(command);
}

} // namespace driftmark
