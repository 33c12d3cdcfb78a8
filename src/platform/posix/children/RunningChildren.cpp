#include "platform/posix/children/RunningChildren.h"

#include "platform/posix/SystemError.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/wait.h>

namespace driftmark {

namespace {

constexpr std::chrono::seconds patience{1};

std::string withoutTrailingSlashes(std::string path) {
  path.erase(path.find_last_not_of('/') + 1);
  return path;
}

system_calls::Pipe requirePipe() {
  std::optional<system_calls::Pipe> pipe = system_calls::makePipe();
  if (!pipe)
    throw std::system_error(errno, std::generic_category(), "pipe");
  return std::move(*pipe);
}

/// Ends a child that nothing can wait for.
LaunchError discard(pid_t pid, int code) {
  ::kill(pid, SIGKILL);
  PosixChildProcess(pid, {}).reap();
  return systemError(LaunchError::Stage::launch, code);
}

} // namespace

RunningChildren::RunningChildren(std::string systemRoot)
    : systemRoot_(withoutTrailingSlashes(std::move(systemRoot))), closing_(requirePipe()) {}

std::variant<std::shared_ptr<PosixChildProcess>, LaunchError>
RunningChildren::launch(const ToolCommand& command, OutputRouting output) {
  // Held during the launch, so that `endAll` misses no child.
  const std::lock_guard lock(mutex_);
  if (!closing_.writeEnd.isOpen())
    return systemError(LaunchError::Stage::launch, ECANCELED);

  auto launched = launchTool(systemRoot_ + command.executable, command.arguments, output);
  if (auto* const error = std::get_if<LaunchError>(&launched))
    return std::move(*error);
  const pid_t pid = std::get<pid_t>(launched);
  FileDescriptor exit = system_calls::watchExit(pid);
  if (!exit.isOpen())
    return discard(pid, errno);
  return children_.emplace_back(std::make_shared<PosixChildProcess>(pid, std::move(exit)));
}

std::optional<LaunchError> RunningChildren::launchDetached(const ToolCommand& command) {
  const std::lock_guard lock(mutex_);
  if (!closing_.writeEnd.isOpen())
    return systemError(LaunchError::Stage::launch, ECANCELED);

  auto launched =
      launchTool(systemRoot_ + command.executable, command.arguments, {}, Session::ofItsOwn);
  if (auto* const error = std::get_if<LaunchError>(&launched))
    return std::move(*error);
  detached_.push_back(std::get<pid_t>(launched));
  return std::nullopt;
}

void RunningChildren::reapDetached() {
  const std::lock_guard lock(mutex_);
  std::erase_if(detached_, [](pid_t pid) { return waitpid(pid, nullptr, WNOHANG) != 0; });
}

int RunningChildren::reap(PosixChildProcess& child) {
  const int status = child.reap();
  const std::lock_guard lock(mutex_);
  std::erase_if(children_, [&](const auto& each) { return each.get() == &child; });
  reaped_.notify_all();
  return status;
}

void RunningChildren::endAll() {
  {
    const std::lock_guard lock(mutex_);
    closing_.writeEnd.reset();
  }
  signalAll(&PosixChildProcess::terminate);
  if (awaitAll())
    return;
  signalAll(&PosixChildProcess::kill);
  awaitAll();
}

void RunningChildren::signalAll(void (PosixChildProcess::*signal)()) {
  const std::lock_guard lock(mutex_);
  for (const auto& child : children_)
    (*child.*signal)();
}

bool RunningChildren::awaitAll() {
  std::unique_lock lock(mutex_);
  return reaped_.wait_for(lock, patience, [this] { return children_.empty(); });
}

} // namespace driftmark
