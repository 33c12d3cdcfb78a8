// How the platform of a replay differs from the program's.

#include "replay/ReplayPlatform.h"

#include <iostream>

namespace driftmark {

void ReplaySystemLog::log(std::string_view line) {
  if (shown_)
    std::cerr << std::string(line) + '\n';
}

std::variant<TerminalChild, LaunchError> ReplayChildProcesses::spawn(const ToolCommand& command,
                                                                     DataHandler onData,
                                                                     ExitHandler /*onExit*/) {
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

std::shared_ptr<ToolRun> ReplayChildProcesses::prepare(const ToolCommand& command,
                                                       ToolOutput output) {
  return children_.prepare(command, output);
}

std::optional<LaunchError> ReplayChildProcesses::launchDetached(const ToolCommand& command) {
  return children_.launchDetached(command);
}

ReplayPlatform::ReplayPlatform(const Options& options)
    : log_(options.showLog), processes_(mainQueue_, options.systemRoot),
      children_(processes_, options.onAllEnded) {}

/// Children end first: the background queue waits for its tasks, and a task may wait for a child.
ReplayPlatform::~ReplayPlatform() {
  processes_.shutdown();
}

SyncMonitor::Ports ReplayPlatform::ports() {
  return {.clock = clock_,
          .mainQueue = mainQueue_,
          .backgroundQueue = backgroundQueue_,
          .childProcesses = children_,
          .systemLog = log_,
          .fileSystem = fileSystem_,
          .environment = environment_,
          .text = text_};
}

} // namespace driftmark
